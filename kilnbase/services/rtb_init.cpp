#include <kilnbase/services/detail/Hook.h>
#include <kilnbase/services/rtb_init.h>

// Each hook is a function, its setter, its result, its parameters and the names of its parameters.
#define KILN_HOOK(function, setter, Result, parameters, arguments)              \
  static constinit vxKilnBase::detail::Hook<Result(*) parameters> setter##Hook; \
  Result function parameters {                                                  \
    return setter##Hook arguments;                                              \
  }                                                                             \
  void setter(Result(*installed) parameters) {                                  \
    setter##Hook.install(installed);                                            \
  }

#define KILN_APPLICATION_HOOK(function, setter)                                           \
  KILN_HOOK(function, setter, intptr_t, (intptr_t a, intptr_t b, intptr_t c, intptr_t d), \
            (a, b, c, d))

KILN_APPLICATION_HOOK(create_itermats, rtbInit_createItermats)
KILN_APPLICATION_HOOK(free_branch_itermats, rtbInit_freeBranchItermats)
KILN_APPLICATION_HOOK(alloc_hanger, rtbInit_AllocHanger)
KILN_APPLICATION_HOOK(free_hanger_list, rtbInit_FreeHangerList)
KILN_APPLICATION_HOOK(insert_hanger, rtbInit_InsertHanger)
KILN_APPLICATION_HOOK(print_hanger_list, rtbInit_PrintHangerList)
KILN_APPLICATION_HOOK(RI_copyRenderInfo, rtbInit_copyRenderInfo)
KILN_APPLICATION_HOOK(RI_freeRenderInfo, rtbInit_freeRenderInfo)
KILN_APPLICATION_HOOK(RI_getName, rtbInit_getName)
KILN_APPLICATION_HOOK(RI_getNext, rtbInit_getNext)
KILN_APPLICATION_HOOK(RI_getPSColoured, rtbInit_getPSColoured)
KILN_APPLICATION_HOOK(RI_setPSColoured, rtbInit_setPSColoured)
KILN_APPLICATION_HOOK(RI_getShaderList, rtbInit_getShaderList)
KILN_APPLICATION_HOOK(RI_showLightInShaderList, rtbInit_showLightInShaderList)
KILN_APPLICATION_HOOK(RI_light_lister_delentry, rtbInit_light_lister_delentry)

KILN_HOOK(PS_polygon_delete_notify, rtbInit_PolysetDeletePolygon, void, (PS_Polygon * polygon),
          (polygon))
KILN_HOOK(PS_polyset_delete_notify, rtbInit_PolysetDelete, void, (PS_Polyset * polyset), (polyset))
KILN_HOOK(PS_setInteractiveDeleteHackParent, rtbInit_PolysetDeleteParent, void, (Dag_node * node),
          (node))
KILN_HOOK(Ps_interactiveNewHack, rtbInit_PolysetNew, void, (PS_Polyset * polyset), (polyset))
KILN_HOOK(Ps_interactivePolysetDeleteHackStart, rtbInit_PolysetDeletePolysetStart, void,
          (PS_Polyset * polyset), (polyset))
KILN_HOOK(Ps_interactivePolysetDeleteHackFinish, rtbInit_PolysetDeletePolysetFinish, void,
          (PS_Polyset * polyset), (polyset))
KILN_HOOK(Ps_interactiveVertexCopyHack, rtbInit_PolysetVertexCopy, void,
          (PS_Vertex & a, PS_Vertex& b), (a, b))
KILN_HOOK(Ps_interactiveVertexDeleteHack, rtbInit_PolysetVertexDelete, void, (PS_Vertex & vertex),
          (vertex))
KILN_HOOK(get_NewPolyset_defaultNormalsDisplay, rtbInit_GetNewPolysetDefaultNormalsDisplay, bool,
          (), ())
KILN_HOOK(get_NewPolyset_defaultVertDisplay, rtbInit_GetNewPolysetDefaultVertDisplay, bool, (), ())
KILN_HOOK(MO_tess_free_data, rtbInit_MOTessFreeData, void, (MO_tess_data * data), (data))
