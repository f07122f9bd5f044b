/* File names that know their kind of data and their place in a numbered sequence.
 *
 * The type of its data decides in which folder of the project a relative name lies
 * (`expand_filename` in db_filename.h).
 */
#ifndef KILNBASE_UTIL_MR_FILENAME_H
#define KILNBASE_UTIL_MR_FILENAME_H

#include <kilnbase/export.h>

/** The types of data that have a name. The types 28 to 32, 34 to 36 and 38 to 47 have only a folder
 * (`Db_get_default_paths`), and there are no types 23 and 33. */
enum {
  ANIM_DATA = 0,
  PIX_DATA = 1,
  SDL_DATA = 2,
  WIRE_DATA = 3,
  MASK_DATA = 4,
  PIXAR_DATA = 5,
  DIR_DATA = 6,
  PROJ_DATA = 7,
  ANY_DATA = 8,
  MISC_DATA = 9,
  DEFAULT_DATA = 10,
  ANYDIR_DATA = 11,
  OPTION_DATA = 12,
  FBI_DATA = 13,
  BROWSE_DATA = 14,
  PLOT_DATA = 15,
  SLA_DATA = 16,
  SHADER_DATA = 17,
  TEXTURE_DATA = 18,
  TEXT_DATA = 19,
  STAGE_DATA = 20,
  SOURCEPIX_DATA = 21,
  DEBUG_DATA = 22,
  WINDOW_DATA = 24,
  RIB_DATA = 25,
  LIGHT_DATA = 26,
  ENVIRONMENT_DATA = 27,
  SOUND_DATA = 37
};

#ifdef __cplusplus

#include <cstdint>

#include <kilnbase/util/DS/ds_structures.h>

/// The name of a file, or of one frame of a numbered sequence of images or animation files: the
/// basename, a dot and the number of the frame, such as shot.0007.
///
/// The frame stands behind the last dot of the name, or in front of an ending that begins with 'Z'
/// (a compressed file): name.0012.Z is frame 12 of name. A dot in front of the last '/' or '\', and
/// a dot that begins the name, separate no frame. Kept as it is: the dot in front of an ending with
/// 'Z' may lie in the name of a folder.
///
/// Callers read the fields and change them by the functions below. Nothing is locked.
class KILNBASE_API MR_Filename {
 public:
  char* name = nullptr;       ///< The full name, owned; null for a frame of a sequence.
  char* basename = nullptr;   ///< The part in front of the frame, owned; null without a frame.
  std::int32_t sequence = 0;  ///< 1 for a frame of a sequence, else 0.
  std::int32_t frame = -1;    ///< The number of the frame; -1 without one.
  std::int32_t type;          ///< The type of data.
  std::int32_t width = 3;     ///< The least number of digits of a frame; grows with leading zeros.

  /// An empty name of `PIX_DATA`.
  MR_Filename();
  /** As after `setFilename`. */
  MR_Filename(const char* name, int type);
  ~MR_Filename();
  MR_Filename(const MR_Filename&) = delete;
  MR_Filename& operator=(const MR_Filename&) = delete;

  /// Takes the name apart. Setting the name that the object has changes nothing. A number beyond
  /// the range of `frame` becomes the largest frame. Null removes the name and leaves the other
  /// fields as they are. Returns 1.
  int setFilename(const char* newName);

  /// The basename if there is one, else the name.
  const char* BaseFilename() const;

  /// Finds the file: the expanded name, the same with ".Z", and for `PIX_DATA` and `MASK_DATA` the
  /// file that `Ar_expand_pixname` tells. The frame of a sequence is tried with 1, 2, ... up to
  /// `width` + 1 digits. Returns 1 and stores the path at `out` when there is a file or folder.
  ///
  /// Otherwise returns 0. Then `out` holds the expanded basename of a sequence, and for another
  /// name the last path that was tried. Kept as it is: for types other than `PIX_DATA` and
  /// `MASK_DATA` that path ends with ".Z".
  ///
  /// `out` has room for 264 characters: a path has at most 260, and 262 with ".Z". A longer path is
  /// not found. A type without a folder has no files under relative names and gives "". A null
  /// `out`, no name at all, and a sequence without a basename give 0.
  int Filename(char* out);

  /// `Filename` without the path.
  int CheckStatus();

  /// Makes this the frame `newFrame` of a sequence and returns the frame before. The same frame
  /// changes nothing.
  int setFrame(int newFrame);

  /// Stores the range of the frames, -1 to 2147483647, as nothing narrows the range, and a count of
  /// 0. Returns 1.
  int getFrameRange(int* first, int* last, int* count) const;
  /// Adds no frame to `frames`. Returns 1.
  int getFrameRange(DS_Structure* frames) const;

  /// Prints the object to standard output. Kept as it is: the expanded name is "(none)" when
  /// `Filename` finds the file, and the path when not.
  void debug();

 private:
  bool findForm(char* out, char* candidate) const;
  bool findFrame(char* out) const;
};

#endif

#endif
