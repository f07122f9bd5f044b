#include <cstdint>
#include <gtest/gtest.h>
#include <initializer_list>
#include <utility>

#include <kilnbase/services/rtb_init.h>

struct PS_Vertex {
  int calls = 0;
};

namespace {

using Forwarder = decltype(&create_itermats);
using Setter = decltype(&rtbInit_createItermats);

constexpr std::pair<Forwarder, Setter> kHooks[] = {
    {create_itermats, rtbInit_createItermats},
    {free_branch_itermats, rtbInit_freeBranchItermats},
    {alloc_hanger, rtbInit_AllocHanger},
    {free_hanger_list, rtbInit_FreeHangerList},
    {insert_hanger, rtbInit_InsertHanger},
    {print_hanger_list, rtbInit_PrintHangerList},
    {RI_copyRenderInfo, rtbInit_copyRenderInfo},
    {RI_freeRenderInfo, rtbInit_freeRenderInfo},
    {RI_getName, rtbInit_getName},
    {RI_getNext, rtbInit_getNext},
    {RI_getPSColoured, rtbInit_getPSColoured},
    {RI_setPSColoured, rtbInit_setPSColoured},
    {RI_getShaderList, rtbInit_getShaderList},
    {RI_showLightInShaderList, rtbInit_showLightInShaderList},
    {RI_light_lister_delentry, rtbInit_light_lister_delentry}};

// Passes the address of a byte, as the library knows nothing of the types.
template <class Pointee>
void expectForwarded(
    std::initializer_list<std::pair<void (*)(Pointee*), void (*)(void (*)(Pointee*))>> hooks) {
  static int calls;
  static Pointee* got;
  char byte;
  for (const auto& [forward, install] : hooks) {
    calls = 0;
    install([](Pointee* pointer) { ++calls, got = pointer; });
    for (const auto& hook : hooks) hook.first(reinterpret_cast<Pointee*>(&byte));
    EXPECT_EQ(1, calls);
    EXPECT_EQ(reinterpret_cast<Pointee*>(&byte), got);
    forward(nullptr);
    EXPECT_EQ(nullptr, got);
    install(nullptr);
  }
}

}  // namespace

TEST(Hooks, EachPassesItsArgumentsToItsOwnFunction) {
  const auto digits = [](intptr_t a, intptr_t b, intptr_t c, intptr_t d) -> intptr_t {
    return ((a * 10 + b) * 10 + c) * 10 + d;
  };
  for (const auto& [forward, install] : kHooks) {
    install(digits);
    for (const auto& hook : kHooks) {
      EXPECT_EQ(hook.first == forward ? 1234 : 0, hook.first(1, 2, 3, 4));
    }
    EXPECT_EQ(INTPTR_MIN, forward(0, 0, 0, INTPTR_MIN));
    install(nullptr);
  }
}

TEST(Hooks, PointersOfTheApplicationPassThrough) {
  expectForwarded<PS_Polygon>({{PS_polygon_delete_notify, rtbInit_PolysetDeletePolygon}});
  expectForwarded<PS_Polyset>(
      {{PS_polyset_delete_notify, rtbInit_PolysetDelete},
       {Ps_interactiveNewHack, rtbInit_PolysetNew},
       {Ps_interactivePolysetDeleteHackStart, rtbInit_PolysetDeletePolysetStart},
       {Ps_interactivePolysetDeleteHackFinish, rtbInit_PolysetDeletePolysetFinish}});
  expectForwarded<Dag_node>({{PS_setInteractiveDeleteHackParent, rtbInit_PolysetDeleteParent}});
  expectForwarded<MO_tess_data>({{MO_tess_free_data, rtbInit_MOTessFreeData}});
}

TEST(Hooks, VerticesAreReferencesAndDefaultsAreFalse) {
  PS_Vertex first, second;
  rtbInit_PolysetVertexCopy([](PS_Vertex& a, PS_Vertex& b) { a.calls = 1, b.calls = 2; });
  rtbInit_PolysetVertexDelete([](PS_Vertex& vertex) { vertex.calls += 10; });
  Ps_interactiveVertexCopyHack(first, second);
  Ps_interactiveVertexDeleteHack(second);
  EXPECT_EQ(1, first.calls);
  EXPECT_EQ(12, second.calls);
  rtbInit_PolysetVertexCopy(nullptr);
  rtbInit_PolysetVertexDelete(nullptr);
  Ps_interactiveVertexDeleteHack(second);
  EXPECT_EQ(12, second.calls);

  EXPECT_FALSE(get_NewPolyset_defaultVertDisplay());
  rtbInit_GetNewPolysetDefaultVertDisplay([] { return true; });
  EXPECT_TRUE(get_NewPolyset_defaultVertDisplay());
  EXPECT_FALSE(get_NewPolyset_defaultNormalsDisplay());
  rtbInit_GetNewPolysetDefaultNormalsDisplay([] { return true; });
  rtbInit_GetNewPolysetDefaultVertDisplay(nullptr);
  EXPECT_TRUE(get_NewPolyset_defaultNormalsDisplay());
  rtbInit_GetNewPolysetDefaultNormalsDisplay(nullptr);
}
