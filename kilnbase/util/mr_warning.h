/* Modal warnings: a message with buttons, shown by the program "morlaWarning" in the folder of the
 * application's programs. The call waits until the user has chosen a button.
 *
 *     const char* answers[] = {"Save", "Discard"};
 *     const int answer = MR_warning_buttons(2, answers, MR_WARNING_MESSAGE,
 *                                           "The model has changed.", MR_WARNING_END);
 *     if (answer == 0) puts("saving");
 *
 * All functions return the position of the chosen button, counted from 0. They return -1 when no
 * button was chosen, when the program could not be run, and when there is nothing to show: neither
 * a message line nor a non-empty extra text, or no button. Texts are UTF-8 and shown as they are. A
 * null text counts as an empty one.
 */
#ifndef KILNBASE_UTIL_MR_WARNING_H
#define KILNBASE_UTIL_MR_WARNING_H

#include <kilnbase/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The tags of a list that describes a warning. A `const char*` follows each tag but the end. */
enum {
  MR_WARNING_MESSAGE = 0, /**< One more line of the message. */
  MR_WARNING_BUTTON = 1,  /**< One more button. */
  MR_WARNING_EXTRA = 2,   /**< The extra text. */
  MR_WARNING_TITLE = 3,   /**< The title. */
  MR_WARNING_END = 4      /**< The end of the list. Any other number ends it too. */
};

/** Warns with `count` buttons, followed by the buttons of the list that starts with `tag`. A
 * `count` below 1 means none. With a `count` above 0 `labels` must not be null. Asserted in debug
 * builds; in release builds the list's own buttons are shown. */
KILNBASE_API int MR_warning_buttons(int count, const char** labels, int tag, ...);

/** Warns with one line and one button, "OK". */
KILNBASE_API int MR_warning_ok(const char* message);

#ifdef __cplusplus
}

#include <cstddef>
#include <type_traits>

#include <vx/Containers.h>
#include <vx/String.h>

namespace vxKilnBase {

/// One warning.
struct MorlaWarningParams {
  vxString::CString title;                 /**<The title of the window. */
  vx::vector<vxString::CString> messages;  ///< A line each.
  vx::vector<vxString::CString> buttons;   /**<The labels, from left to right. */
  vxString::CString extra;                 /**<The extra text. */
};

}  // namespace vxKilnBase

/** Shows the warning. */
KILNBASE_API int MR_warning(const vxKilnBase::MorlaWarningParams& warning);

/// Shows the warning that the list starting with `tag` describes.
KILNBASE_API int MR_warning(int tag, ...);

// Compilers let any class pass as a value of such a list, which can hold `const char*` only. They
// take `{}`, meant as an empty warning, for a tag.
template <class... Values>
int MR_warning(int tag, const Values&... values) requires(std::is_class_v<Values> || ...) = delete;
template <class... Values>
int MR_warning_buttons(int count, const char** labels, int tag,
                       const Values&... values) requires(std::is_class_v<Values> || ...) = delete;
int MR_warning(std::nullptr_t) = delete;

#endif

#endif
