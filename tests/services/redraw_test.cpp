#include <cstdint>
#include <gtest/gtest.h>
#include <utility>

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
  const std::pair<void (*)(), std::uint32_t> sets[] = {{redraw_add_active_planes, 0x9C0},
                                                       {redraw_add_model_planes, 0x9F8},
                                                       {redraw_add_template_planes, 0x9FF},
                                                       {redraw_add_window_planes, 0xFFF}};
  for (const auto& [add, planes] : sets) {
    add();
    EXPECT_EQ(planes, redraw_get_pending_planes());
    redraw_remove_planes(0xF00);
    EXPECT_EQ(planes & 0x0FF, redraw_get_pending_planes());
    EXPECT_EQ(1, redraw_get_pending_layers());
    redraw_remove_planes(0x0FF);
    EXPECT_EQ(0, redraw_get_pending_layers());
  }
  EXPECT_EQ(0, notifications);
}

TEST_F(Redraw, TheLowestLayerCountsAndThePreviousOneIsTheResult) {
  int previous = 0;
  for (const auto& [layer, pending] : {std::pair{3, 3}, {5, 3}, {2, 2}, {-1, -1}, {2, -1}}) {
    EXPECT_EQ(previous, redraw_add_pending_layers(layer));
    EXPECT_EQ(pending, redraw_get_pending_layers());
    previous = pending;
  }
}

TEST_F(Redraw, NotificationsComeWithoutRequestsAndOnlyWhileTheCountIsZero) {
  redraw_any_pending();
  EXPECT_EQ(1, notifications);
  redraw_disable();
  redraw(0x11, 4);
  redraw_all();
  EXPECT_EQ(1, notifications);
  EXPECT_EQ(0x11U, redraw_get_pending_planes());
  EXPECT_EQ(4, redraw_get_pending_layers());
  redraw_enable();
  redraw(0x100, 4);
  redraw_all();
  EXPECT_EQ(3, notifications);
  redraw_enable();
  redraw_any_pending();
  EXPECT_EQ(3, notifications);
  redraw_disable();
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
