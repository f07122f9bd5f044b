#include <cstdint>
#include <gtest/gtest.h>

#include <kilnbase/services/redraw.h>
#include <kilnbase/services/rtb_init.h>

namespace {

int notifications = 0;

struct Redraw : testing::Test {
  Redraw() {
    notifications = 0;
    rtbInit_redrawSetRedrawPending([] { ++notifications; });
  }
  ~Redraw() override {
    rtbInit_redrawSetRedrawPending(nullptr);
    redraw_reset_pending();
  }
};

}  // namespace

TEST_F(Redraw, SetsOfPlanesAreAddedAndTakenBackWithTheirLayer) {
  const struct {
    void (*add)();
    std::uint32_t planes;
  } cases[] = {{redraw_add_active_planes, 0x9C0},
               {redraw_add_model_planes, 0x9F8},
               {redraw_add_template_planes, 0x9FF},
               {redraw_add_window_planes, 0xFFF}};
  for (const auto& each : cases) {
    each.add();
    EXPECT_EQ(each.planes, redraw_get_pending_planes());
    EXPECT_EQ(1, redraw_get_pending_layers());
    redraw_remove_planes(each.planes & 0xF00);
    EXPECT_EQ(each.planes & 0x0FF, redraw_get_pending_planes());
    EXPECT_EQ(1, redraw_get_pending_layers());
    redraw_remove_planes(0x0FF);
    EXPECT_EQ(0, redraw_get_pending_layers());
  }
  EXPECT_EQ(0, notifications);
}

TEST_F(Redraw, TheLowestLayerCountsAndThePreviousOneIsTheResult) {
  const struct {
    int layer;
    int previous;
    int pending;
  } calls[] = {{3, 0, 3}, {5, 3, 3}, {2, 3, 2}, {-1, 2, -1}, {2, -1, -1}};
  for (const auto& call : calls) {
    EXPECT_EQ(call.previous, redraw_add_pending_layers(call.layer));
    EXPECT_EQ(call.pending, redraw_get_pending_layers());
  }
}

TEST_F(Redraw, NotificationsComeWithoutRequestsAndOnlyWhileTheCountIsZero) {
  redraw_any_pending();
  EXPECT_EQ(1, notifications);
  redraw_disable();
  redraw_disable();
  redraw(0x11, 4);
  redraw_enable();
  redraw_all();
  EXPECT_EQ(1, notifications);
  EXPECT_EQ(0x11U, redraw_get_pending_planes());
  EXPECT_EQ(4, redraw_get_pending_layers());
  redraw_enable();
  redraw(0x100, 4);
  EXPECT_EQ(2, notifications);
  EXPECT_EQ(0x111U, redraw_get_pending_planes());
  redraw_enable();
  redraw_any_pending();
  EXPECT_EQ(2, notifications);
  redraw_disable();
  redraw_all();
  EXPECT_EQ(3, notifications);
}

TEST_F(Redraw, ResetTakesBackAllButTheUpdateFlag) {
  rtbInit_redrawSetRedrawPending(nullptr);
  redraw_all();
  EXPECT_TRUE(redraw_get_pending_redraw_all());
  redraw_remove_redraw_all();
  EXPECT_FALSE(redraw_get_pending_redraw_all());
  redraw_add_all();
  redraw_add_planes(1, 1);
  vxKilnBase_set_update_pending();
  redraw_reset_pending();
  EXPECT_FALSE(redraw_get_pending_redraw_all());
  EXPECT_EQ(0U, redraw_get_pending_planes());
  EXPECT_EQ(0, redraw_get_pending_layers());
  EXPECT_TRUE(vxKilnBase_get_update_pending());
  vxKilnBase_clear_update_pending();
  EXPECT_FALSE(vxKilnBase_get_update_pending());
}
