// The host's side of rtb_init.h: the functions of its renderer, its polygon editor and its
// tessellator, which the library calls.
#pragma once

#include <functional>
#include <string>

struct PS_Polygon {};
struct PS_Polyset {};
struct PS_Vertex {
  double x = 0.0, y = 0.0, z = 0.0;
};
struct Dag_node {};
struct MO_tess_data {};

namespace host {

/// A light of the renderer. The library passes lights around as numbers of the size of a pointer.
struct Light {
  std::string name;
  Light* next = nullptr;
  bool isColoured = false;
};

/// Has every hook call the host. Most of them only tell `say` what was asked for: a real
/// application does its work there.
void installHooks(std::function<void(const std::string&)> say);

/// Removes every hook: the library calls nothing of the host any more.
void removeHooks();

}  // namespace host
