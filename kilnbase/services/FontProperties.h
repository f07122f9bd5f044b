/* The description of a font: family, size, style, weight and pitch, all of them valid.
 *
 *     FontProperties* font = FontProperties_alloc();
 *     FontProperties_setFontSize(font, 12);
 *     printf("%d points\n", FontProperties_getFontSize(font));
 *     FontProperties_free(font);
 */
#ifndef KILNBASE_SERVICES_FONTPROPERTIES_H
#define KILNBASE_SERVICES_FONTPROPERTIES_H

#include <kilnbase/export.h>

#ifdef __cplusplus
class FontProperties;
extern "C" {
#else
typedef struct FontProperties FontProperties;
#endif

/** A new font with the defaults; null when there is no memory. */
KILNBASE_API FontProperties* FontProperties_alloc(void);
/** Deletes a font; null is ignored. */
KILNBASE_API void FontProperties_free(FontProperties* font);
/** Copies `source` to `target`. When there is no memory for the family, `target` stays as it is.
 * Neither is null. Asserted in debug builds; ignored in release builds. */
KILNBASE_API void FontProperties_assign(FontProperties* target, const FontProperties* source);
/** 0 for null. */
KILNBASE_API int FontProperties_getFontSize(const FontProperties* font);
/** As `FontProperties::setFontSize`; null is ignored. */
KILNBASE_API void FontProperties_setFontSize(FontProperties* font, int size);

#ifdef __cplusplus
}

#include <vx/Containers.h>
#include <vx/String.h>

/// A value: copies are independent. The setters replace an invalid value by a valid one and tell so
/// in the debug output at level 0 (`rptDebug`).
class KILNBASE_API FontProperties {
 public:
  static const int k_defaultFontSize = 10;  ///< In points.
  /** The range of sizes in points, and the defaults. */
  static const int k_minFontSize = 1;
  static const int k_maxFontSize = 720;
  static const int k_defaultFontStyle = 0;
  static const int k_defaultFontWeight = 0;
  static const int k_defaultFontPitch = 0;

  /// What `compare` looks at.
  static const int sizePropertyMask = 1;
  static const int weightPropertyMask = 2;
  static const int stylePropertyMask = 4;
  static const int pitchPropertyMask = 8;
  static const int familyPropertyMask = 16;
  static const int allPropertiesMask = 255;

  /// Helvetica in the default size, style, weight and pitch.
  FontProperties();
  /** Helvetica in this size. */
  explicit FontProperties(int size);
  /** Each value as by its setter. */
  FontProperties(const vxString::CString& family, int size, int weight, int style, int pitch);

  FontProperties(const FontProperties&) = default;
  FontProperties& operator=(const FontProperties& other);
  ~FontProperties() = default;

  /** What the setters have stored. */
  const vxString::CString& getFontFamily() const { return family_; }
  int getFontSize() const { return size_; }
  int getFontStyle() const { return style_; }
  int getFontWeight() const { return weight_; }
  int getFontPitch() const { return pitch_; }

  /// An empty name stands for Helvetica. Kept as it is: the message shows the two names as numbers,
  /// the low 32 bits of their addresses.
  void setFontFamily(const vxString::CString& family);
  /// A size outside `k_minFontSize` to `k_maxFontSize` becomes the nearest one inside.
  void setFontSize(int size);
  /// Adds style bits. Kept as it is: no call clears a bit, and a style with a bit outside 0x7 adds
  /// none.
  void setFontStyle(int style);
  /// A weight other than 0, 50 and 100 becomes 0.
  void setFontWeight(int weight);
  /// A pitch other than 0 and 1 becomes 0.
  void setFontPitch(int pitch);

  /** Whether the setter would take the value as it is. */
  static bool isValidFontFamily(const vxString::CString& family);
  static bool isValidFontSize(int size);
  static bool isValidFontStyle(int style);
  static bool isValidFontWeight(int weight);
  static bool isValidFontPitch(int pitch);

  /// Compares those properties whose bits `mask` has, in this order: size, weight, style, pitch,
  /// family. The first that differs decides. For a number: -1 when the number of this font is
  /// smaller, 1 when it is greater. For the family: the answer of `CString::compare`. 0 when none
  /// differs.
  int compare(const FontProperties& other, int mask) const;
  /// Whether the fonts differ in size at most.
  bool isScaledEquivalent(const FontProperties& other) const;

  /// The sizes to offer to a user, rising from 8 to 72 points.
  static const vx::vector<int>& getStandardFontSizes();

 private:
  static int clampToValidFontSize(int size);

  vxString::CString defaultFamily_ = "Helvetica";
  int size_ = k_defaultFontSize;
  int style_ = k_defaultFontStyle;
  int weight_ = k_defaultFontWeight;
  int pitch_ = k_defaultFontPitch;
  vxString::CString family_ = defaultFamily_;
};

#endif

#endif
