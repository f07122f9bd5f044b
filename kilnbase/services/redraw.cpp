#include <cstdint>

#include <kilnbase/services/detail/Hook.h>
#include <kilnbase/services/redraw.h>
#include <kilnbase/services/rtb_init.h>

namespace {

constexpr std::uint32_t kActivePlanes = 0x9C0;
constexpr std::uint32_t kModelPlanes = 0x9F8;
constexpr std::uint32_t kTemplatePlanes = 0x9FF;
constexpr std::uint32_t kWindowPlanes = 0xFFF;

constinit std::uint32_t pendingPlanes = 0;
constinit int pendingLayers = 0;
constinit bool redrawAll = false;
constinit int disableCount = 0;
constinit bool updatePending = false;
constinit vxKilnBase::detail::Hook<void (*)()> setRedrawPending;

}  // namespace

void rtbInit_redrawSetRedrawPending(void (*function)()) {
  setRedrawPending.install(function);
}

void redraw_add_pending_planes(std::uint32_t planes) {
  pendingPlanes |= planes;
}

int redraw_add_pending_layers(int layer) {
  const int previous = pendingLayers;
  if (previous == 0 || layer < previous) pendingLayers = layer;
  return previous;
}

void redraw_add_planes(std::uint32_t planes, int layer) {
  redraw_add_pending_planes(planes);
  redraw_add_pending_layers(layer);
}

void redraw_add_active_planes() {
  redraw_add_planes(kActivePlanes, 1);
}

void redraw_add_model_planes() {
  redraw_add_planes(kModelPlanes, 1);
}

void redraw_add_template_planes() {
  redraw_add_planes(kTemplatePlanes, 1);
}

void redraw_add_window_planes() {
  redraw_add_planes(kWindowPlanes, 1);
}

void redraw_add_all() {
  redrawAll = true;
}

void redraw_remove_redraw_all() {
  redrawAll = false;
}

void redraw_remove_planes(std::uint32_t planes) {
  pendingPlanes &= ~planes;
  if (pendingPlanes == 0) pendingLayers = 0;
}

void redraw_reset_pending() {
  pendingPlanes = 0;
  pendingLayers = 0;
  redrawAll = false;
}

std::uint32_t redraw_get_pending_planes() {
  return pendingPlanes;
}

int redraw_get_pending_layers() {
  return pendingLayers;
}

bool redraw_get_pending_redraw_all() {
  return redrawAll;
}

void redraw_disable() {
  ++disableCount;
}

void redraw_enable() {
  --disableCount;
}

void redraw_any_pending() {
  if (disableCount == 0) setRedrawPending();
}

void redraw(std::uint32_t planes, int layer) {
  redraw_add_planes(planes, layer);
  redraw_any_pending();
}

void redraw_all() {
  redraw_add_all();
  redraw_any_pending();
}

void vxKilnBase_set_update_pending() {
  updatePending = true;
}

void vxKilnBase_clear_update_pending() {
  updatePending = false;
}

bool vxKilnBase_get_update_pending() {
  return updatePending;
}
