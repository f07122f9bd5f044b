/* Requests to redraw.
 *
 * Any code may ask for a redraw: of some of the display planes from a layer on, or of everything.
 * The main loop of the application reads the requests after each event, draws, and resets them.
 *
 *     redraw_add_model_planes();
 *     if (redraw_get_pending_planes() != 0) puts("drawing the model");
 *     redraw_reset_pending();
 *
 * A set of planes is a mask of bits that the application gives meaning. Nothing is locked: the
 * requests are for the application's main thread.
 */
#ifndef KILNBASE_SERVICES_REDRAW_H
#define KILNBASE_SERVICES_REDRAW_H

#include <stdbool.h>
#include <stdint.h>

#include <kilnbase/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Adds planes to those that need a redraw. */
KILNBASE_API void redraw_add_pending_planes(uint32_t planes);
/** Asks for a redraw from `layer` on: the lowest layer asked for counts. Returns the layer asked
 * for before, 0 when there was none. Kept as it is: while a layer is pending, a `layer` of 0 is
 * lower, and takes the request for layers back. */
KILNBASE_API int redraw_add_pending_layers(int layer);
/** Both of the above. */
KILNBASE_API void redraw_add_planes(uint32_t planes, int layer);

/** The planes of one kind, from layer 1 on. */
KILNBASE_API void redraw_add_active_planes(void);   /**< 0x9C0 */
KILNBASE_API void redraw_add_model_planes(void);    /**< 0x9F8 */
KILNBASE_API void redraw_add_template_planes(void); /**< 0x9FF */
KILNBASE_API void redraw_add_window_planes(void);   /**< 0xFFF */

/** Asks for a redraw of everything, a flag beside the planes and layers. */
KILNBASE_API void redraw_add_all(void);
/** Takes the request for everything back; planes and layers stay. */
KILNBASE_API void redraw_remove_redraw_all(void);

/** Takes the request for these planes back; with the last plane the request for layers, too. */
KILNBASE_API void redraw_remove_planes(uint32_t planes);
/** Takes all requests back. */
KILNBASE_API void redraw_reset_pending(void);

/** The requests. */
KILNBASE_API uint32_t redraw_get_pending_planes(void);
KILNBASE_API int redraw_get_pending_layers(void); /**< The lowest layer, or 0. */
/** Whether everything is to be redrawn. */
KILNBASE_API bool redraw_get_pending_redraw_all(void);

/** Switch the notifications of `redraw_any_pending` off and on again. Calls nest and must pair: a
 * `redraw_enable` too many switches the notifications off. Requests are noted all the same. */
KILNBASE_API void redraw_disable(void);
KILNBASE_API void redraw_enable(void);

/** Calls the function that `rtbInit_redrawSetRedrawPending` (rtb_init.h) has installed, unless
 * notifications are off. Kept as it is: the function is called without any request too, and decides
 * itself whether there is something to draw. */
KILNBASE_API void redraw_any_pending(void);

/** `redraw_add_planes`, or `redraw_add_all`, and `redraw_any_pending`. */
KILNBASE_API void redraw(uint32_t planes, int layer);
KILNBASE_API void redraw_all(void);

/** A flag of the application beside the requests: something waits to be brought up to date. */
KILNBASE_API void vxKilnBase_set_update_pending(void);
KILNBASE_API void vxKilnBase_clear_update_pending(void);
KILNBASE_API bool vxKilnBase_get_update_pending(void);

#ifdef __cplusplus
}
#endif

#endif
