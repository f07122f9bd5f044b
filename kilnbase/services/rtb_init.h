/* The application's functions that the library calls.
 *
 * The library lies below the renderer, the polygon editor and the scene graph. To call them, it
 * calls functions of this header, each of which passes its arguments to the function that the
 * application has installed, and returns that function's result.
 *
 *     rtbInit_freeBranchItermats(NULL);
 *     free_branch_itermats(1, 2, 3, 4);  // nothing is installed: does nothing and returns 0
 *
 * The application installs its functions at the start, before it calls anything else that may need
 * them. A later call replaces the function, null removes it. A function that is not installed
 * does nothing and returns zero (null, false).
 *
 * The library knows no more of the application's types than their names, and of most of the
 * functions no signature: those take four arguments of the size of a pointer and return one.
 * The application passes the arguments that its own function understands and zeros for the rest.
 *
 * Two more hooks stand elsewhere: `redraw_any_pending` (redraw.h) calls what
 * `rtbInit_redrawSetRedrawPending` installs, and `Ar_expand_pixname` and its setter are part of the
 * platform (vx/PixName.h).
 */
#ifndef KILNBASE_SERVICES_RTB_INIT_H
#define KILNBASE_SERVICES_RTB_INIT_H

#include <stdbool.h>
#include <stdint.h>

#include <kilnbase/export.h>
#include <vx/PixName.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Four arguments and a result whose meaning is the application's. */
typedef intptr_t (*RtbHook)(intptr_t a, intptr_t b, intptr_t c, intptr_t d);

/** Installs what `redraw_any_pending` calls. */
KILNBASE_API void rtbInit_redrawSetRedrawPending(void (*function)(void));

/** The renderer's materials, the hangers of the scene graph and the light lister: each hook, and
 * the function that installs it. */

KILNBASE_API intptr_t create_itermats(intptr_t a, intptr_t b, intptr_t c, intptr_t d);
KILNBASE_API void rtbInit_createItermats(RtbHook function);

KILNBASE_API intptr_t free_branch_itermats(intptr_t a, intptr_t b, intptr_t c, intptr_t d);
KILNBASE_API void rtbInit_freeBranchItermats(RtbHook function);

KILNBASE_API intptr_t alloc_hanger(intptr_t a, intptr_t b, intptr_t c, intptr_t d);
KILNBASE_API void rtbInit_AllocHanger(RtbHook function);

KILNBASE_API intptr_t free_hanger_list(intptr_t a, intptr_t b, intptr_t c, intptr_t d);
KILNBASE_API void rtbInit_FreeHangerList(RtbHook function);

KILNBASE_API intptr_t insert_hanger(intptr_t a, intptr_t b, intptr_t c, intptr_t d);
KILNBASE_API void rtbInit_InsertHanger(RtbHook function);

KILNBASE_API intptr_t print_hanger_list(intptr_t a, intptr_t b, intptr_t c, intptr_t d);
KILNBASE_API void rtbInit_PrintHangerList(RtbHook function);

KILNBASE_API intptr_t RI_copyRenderInfo(intptr_t a, intptr_t b, intptr_t c, intptr_t d);
KILNBASE_API void rtbInit_copyRenderInfo(RtbHook function);

KILNBASE_API intptr_t RI_freeRenderInfo(intptr_t a, intptr_t b, intptr_t c, intptr_t d);
KILNBASE_API void rtbInit_freeRenderInfo(RtbHook function);

KILNBASE_API intptr_t RI_getName(intptr_t a, intptr_t b, intptr_t c, intptr_t d);
KILNBASE_API void rtbInit_getName(RtbHook function);

KILNBASE_API intptr_t RI_getNext(intptr_t a, intptr_t b, intptr_t c, intptr_t d);
KILNBASE_API void rtbInit_getNext(RtbHook function);

KILNBASE_API intptr_t RI_getPSColoured(intptr_t a, intptr_t b, intptr_t c, intptr_t d);
KILNBASE_API void rtbInit_getPSColoured(RtbHook function);

KILNBASE_API intptr_t RI_setPSColoured(intptr_t a, intptr_t b, intptr_t c, intptr_t d);
KILNBASE_API void rtbInit_setPSColoured(RtbHook function);

KILNBASE_API intptr_t RI_getShaderList(intptr_t a, intptr_t b, intptr_t c, intptr_t d);
KILNBASE_API void rtbInit_getShaderList(RtbHook function);

KILNBASE_API intptr_t RI_showLightInShaderList(intptr_t a, intptr_t b, intptr_t c, intptr_t d);
KILNBASE_API void rtbInit_showLightInShaderList(RtbHook function);

KILNBASE_API intptr_t RI_light_lister_delentry(intptr_t a, intptr_t b, intptr_t c, intptr_t d);
KILNBASE_API void rtbInit_light_lister_delentry(RtbHook function);

/** A type of the application, known by its name here. */
typedef struct Dag_node Dag_node;
typedef struct MO_tess_data MO_tess_data;
typedef struct PS_Polygon PS_Polygon;
typedef struct PS_Polyset PS_Polyset;
typedef struct PS_Vertex PS_Vertex;

/** A reference, which C passes as a pointer. */
#ifdef __cplusplus
typedef PS_Vertex& PS_VertexReference;
#else
typedef PS_Vertex* PS_VertexReference;
#endif

/** The editor of polygon sets: each hook, and the function that installs it. */

KILNBASE_API void PS_polygon_delete_notify(PS_Polygon* polygon);
KILNBASE_API void rtbInit_PolysetDeletePolygon(void (*function)(PS_Polygon* polygon));

KILNBASE_API void PS_polyset_delete_notify(PS_Polyset* polyset);
KILNBASE_API void rtbInit_PolysetDelete(void (*function)(PS_Polyset* polyset));

KILNBASE_API void PS_setInteractiveDeleteHackParent(Dag_node* node);
KILNBASE_API void rtbInit_PolysetDeleteParent(void (*function)(Dag_node* node));

KILNBASE_API void Ps_interactiveNewHack(PS_Polyset* polyset);
KILNBASE_API void rtbInit_PolysetNew(void (*function)(PS_Polyset* polyset));

KILNBASE_API void Ps_interactivePolysetDeleteHackStart(PS_Polyset* polyset);
KILNBASE_API void rtbInit_PolysetDeletePolysetStart(void (*function)(PS_Polyset* polyset));

KILNBASE_API void Ps_interactivePolysetDeleteHackFinish(PS_Polyset* polyset);
KILNBASE_API void rtbInit_PolysetDeletePolysetFinish(void (*function)(PS_Polyset* polyset));

KILNBASE_API void Ps_interactiveVertexCopyHack(PS_VertexReference a, PS_VertexReference b);
KILNBASE_API void rtbInit_PolysetVertexCopy(void (*function)(PS_VertexReference a,
                                                             PS_VertexReference b));

KILNBASE_API void Ps_interactiveVertexDeleteHack(PS_VertexReference vertex);
KILNBASE_API void rtbInit_PolysetVertexDelete(void (*function)(PS_VertexReference vertex));

KILNBASE_API bool get_NewPolyset_defaultNormalsDisplay(void);
KILNBASE_API void rtbInit_GetNewPolysetDefaultNormalsDisplay(bool (*function)(void));

KILNBASE_API bool get_NewPolyset_defaultVertDisplay(void);
KILNBASE_API void rtbInit_GetNewPolysetDefaultVertDisplay(bool (*function)(void));

/** Tessellation: the hook, and the function that installs it. */
KILNBASE_API void MO_tess_free_data(MO_tess_data* data);
KILNBASE_API void rtbInit_MOTessFreeData(void (*function)(MO_tess_data* data));

#ifdef __cplusplus
}
#endif

#endif
