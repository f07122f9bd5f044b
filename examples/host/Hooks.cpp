#include "examples/host/Hooks.h"

#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <utility>

#include <kilnbase/services/rtb_init.h>
#include <vx/Memory.h>

namespace host {

namespace {

std::function<void(const std::string&)> gSay;

// C functions must not let exceptions pass; a message that cannot be shown is lost.
void say(const char* what) noexcept {
  try {
    if (gSay) gSay(what);
  } catch (const std::exception&) {
    return;
  }
}

Light& lightOf(std::intptr_t number) {
  return *std::bit_cast<Light*>(number);
}

std::intptr_t numberOf(const void* pointer) {
  return std::bit_cast<std::intptr_t>(pointer);
}

//! [hook]
std::intptr_t nameOf(std::intptr_t light, std::intptr_t, std::intptr_t, std::intptr_t) {
  return numberOf(lightOf(light).name.c_str());
}
//! [hook]

std::intptr_t nextOf(std::intptr_t light, std::intptr_t, std::intptr_t, std::intptr_t) {
  return numberOf(lightOf(light).next);
}

std::intptr_t isColoured(std::intptr_t light, std::intptr_t, std::intptr_t, std::intptr_t) {
  return lightOf(light).isColoured ? 1 : 0;
}

std::intptr_t setColoured(std::intptr_t light, std::intptr_t on, std::intptr_t, std::intptr_t) {
  lightOf(light).isColoured = on != 0;
  return 1;
}

// A hook of a part that this host does not have: it tells what the library wants, and answers 0.
template <const char* kWhat>
std::intptr_t tell(std::intptr_t, std::intptr_t, std::intptr_t, std::intptr_t) {
  say(kWhat);
  return 0;
}

template <const char* kWhat, class... Arguments>
void tellOf(Arguments...) {
  say(kWhat);
}

constexpr char kCreateMaterials[] = "create materials", kFreeMaterials[] = "free materials",
               kAllocHanger[] = "allocate a hanger", kFreeHangers[] = "free hangers",
               kInsertHanger[] = "insert a hanger", kPrintHangers[] = "print hangers",
               kCopyInfo[] = "copy render info", kFreeInfo[] = "free render info",
               kShaders[] = "list shaders", kShowLight[] = "show a light",
               kDeleteLight[] = "delete a light", kPolygon[] = "a polygon goes away",
               kPolyset[] = "a polyset goes away", kParent[] = "the parent of a polyset",
               kNewPolyset[] = "a new polyset", kDeleteStart[] = "polysets are being deleted",
               kDeleteEnd[] = "polysets have been deleted", kCopyVertex[] = "a vertex is copied",
               kDeleteVertex[] = "a vertex goes away", kFreeTess[] = "free a tessellation",
               kRedraw[] = "a redraw is pending";

// Each hook that has the general signature, with the host's function.
constexpr std::pair<void (*)(RtbHook), RtbHook> kGeneralHooks[] = {
    {rtbInit_createItermats, tell<kCreateMaterials>},
    {rtbInit_freeBranchItermats, tell<kFreeMaterials>},
    {rtbInit_AllocHanger, tell<kAllocHanger>},
    {rtbInit_FreeHangerList, tell<kFreeHangers>},
    {rtbInit_InsertHanger, tell<kInsertHanger>},
    {rtbInit_PrintHangerList, tell<kPrintHangers>},
    {rtbInit_copyRenderInfo, tell<kCopyInfo>},
    {rtbInit_freeRenderInfo, tell<kFreeInfo>},
    {rtbInit_getName, nameOf},
    {rtbInit_getNext, nextOf},
    {rtbInit_getPSColoured, isColoured},
    {rtbInit_setPSColoured, setColoured},
    {rtbInit_getShaderList, tell<kShaders>},
    {rtbInit_showLightInShaderList, tell<kShowLight>},
    {rtbInit_light_lister_delentry, tell<kDeleteLight>}};

bool yes() {
  return true;
}

// Images of this host are TIFF files.
char* imageFile(char* name, int) {
  const std::size_t size = std::strlen(name) + sizeof ".tif";
  auto* const file = static_cast<char*>(MA_malloc(size, __LINE__, __FILE__));
  if (file) std::snprintf(file, size, "%s.tif", name);
  return file;
}

// Installs the functions that have signatures of their own, or removes them.
void setSpecialHooks(bool on) {
  rtbInit_redrawSetRedrawPending(on ? tellOf<kRedraw> : nullptr);
  rtbInit_PolysetDeletePolygon(on ? tellOf<kPolygon, PS_Polygon*> : nullptr);
  rtbInit_PolysetDelete(on ? tellOf<kPolyset, PS_Polyset*> : nullptr);
  rtbInit_PolysetDeleteParent(on ? tellOf<kParent, Dag_node*> : nullptr);
  rtbInit_PolysetNew(on ? tellOf<kNewPolyset, PS_Polyset*> : nullptr);
  rtbInit_PolysetDeletePolysetStart(on ? tellOf<kDeleteStart, PS_Polyset*> : nullptr);
  rtbInit_PolysetDeletePolysetFinish(on ? tellOf<kDeleteEnd, PS_Polyset*> : nullptr);
  rtbInit_PolysetVertexCopy(on ? tellOf<kCopyVertex, PS_Vertex&, PS_Vertex&> : nullptr);
  rtbInit_PolysetVertexDelete(on ? tellOf<kDeleteVertex, PS_Vertex&> : nullptr);
  rtbInit_GetNewPolysetDefaultNormalsDisplay(on ? yes : nullptr);
  rtbInit_GetNewPolysetDefaultVertDisplay(on ? yes : nullptr);
  rtbInit_MOTessFreeData(on ? tellOf<kFreeTess, MO_tess_data*> : nullptr);
  rtbInit_Ar_expand_pixname(on ? imageFile : nullptr);
}

}  // namespace

//! [hooks]
void installHooks(std::function<void(const std::string&)> newSay) {
  gSay = std::move(newSay);
  for (const auto& [install, function] : kGeneralHooks) install(function);
  setSpecialHooks(true);
}
//! [hooks]

void removeHooks() {
  for (const auto& [install, function] : kGeneralHooks) install(nullptr);
  setSpecialHooks(false);
  gSay = nullptr;
}

}  // namespace host
