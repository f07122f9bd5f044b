/* The choices in which the products differ: yes or no, names of files, a scale.
 *
 * The library answers with defaults. A product derives a class from `MorlaBehaviour`, overrides
 * what the product does differently, and installs an object of the class at start-up
 * (`MorlaBehaviour::set`). The flat functions ask the installed object, as `MorlaBehaviour::get()`
 * does:
 *
 *     if (MorlaBehaviour_saveOnExit()) puts("saving");
 *
 * Everything here is for the application's main thread.
 */
#ifndef KILNBASE_SERVICES_MORLABEHAVIOUR_H
#define KILNBASE_SERVICES_MORLABEHAVIOUR_H

#include <stdbool.h>

#include <kilnbase/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The answer of the installed object to the function of the same name. */
KILNBASE_API bool MorlaBehaviour_autoKilnWindows(void);
KILNBASE_API bool MorlaBehaviour_documentSettingsOverrideSessionSettings(void);
KILNBASE_API bool MorlaBehaviour_enableNukeAllOnRetrieve(void);
KILNBASE_API bool MorlaBehaviour_enablePaintUI(void);
KILNBASE_API bool MorlaBehaviour_largeModelingWindowSize(void);
KILNBASE_API bool MorlaBehaviour_paintEnabled(void);
KILNBASE_API bool MorlaBehaviour_saveOnExit(void);
KILNBASE_API bool MorlaBehaviour_wantSinglePerspWindow(void);
KILNBASE_API double MorlaBehaviour_modelingWindowScale(void);

/** Names of files. The texts belong to the installed object; by default they live for ever. */
KILNBASE_API const char* MorlaBehaviour_getBrowserPrefsFileName(void);
KILNBASE_API const char* MorlaBehaviour_getUserPrefsFileName(void);

/** The name of the icon in UTF-8, which the caller frees with `free`. Null when the name is empty
 * and when there is no memory. */
KILNBASE_API char* MorlaBehaviour_getProductIconName(void);

#ifdef __cplusplus
}

#include <vx/String.h>

/// The answers of a product. The order of the virtual functions is part of the binary interface:
/// new ones go to the end.
class KILNBASE_API MorlaBehaviour {
 public:
  virtual ~MorlaBehaviour();
  MorlaBehaviour(const MorlaBehaviour&) = delete;
  MorlaBehaviour& operator=(const MorlaBehaviour&) = delete;

  /// The installed object. When there is none, the call installs one with the defaults.
  static MorlaBehaviour* get();
  /// Installs an object from `new`, which the library owns from now on, and deletes the one that
  /// was installed. After null the defaults hold again. The installed object stays as it is when it
  /// is installed once more. The last object is not deleted at the end of the process.
  static void set(MorlaBehaviour* behaviour);

  virtual bool wantSinglePerspWindow();                    ///< false
  virtual bool isMultipleKilnSessionsAllowed();            ///< false
  virtual vxString::IString getProductPrefix();            ///< "Morla"
  virtual vxString::IString getProductIconName();          ///< "Morla"
  virtual bool userInformationEnabled();                   ///< true
  virtual bool supportSingleStage();                       ///< true
  virtual bool documentSettingsOverrideSessionSettings();  ///< false
  virtual bool largeModelingWindowSize();                  ///< false
  virtual bool paintEnabled() const;                       ///< false
  virtual bool enablePaintUI() const;                      ///< false
  virtual bool paintOnOverlaysOnly() const;                ///< false
  virtual bool paintAddBookmarkToOverlays() const;         ///< false
  virtual bool autoKilnWindows();                          ///< false
  virtual const char* getUserPrefsFileName() const;        ///< "UserPrefs"
  virtual const char* getUserOptionsFileName();            ///< "user_options"
  virtual const char* getBrowserPrefsFileName();           ///< ".MorlaBrowserPrefs"
  virtual const char* getHelpFileName();                   ///< "Help.hta"
  virtual vxString::CString getMorlaPrefsFilename();       ///< "MorlaPrefs.scm"
  virtual double modelingWindowScale();                    ///< 1.0
  virtual bool splashAtStartup() const;                    ///< true
  virtual bool enableNukeAllOnRetrieve() const;            ///< false
  virtual bool saveOnExit() const;                         ///< true
  virtual bool hardwareReflectionsEnabled() const;         ///< true

 protected:
  MorlaBehaviour();
};

#endif

#endif
