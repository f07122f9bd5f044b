#include <algorithm>
#include <new>

#include <kilnbase/detail/assert.h>
#include <kilnbase/services/FontProperties.h>
#include <kilnbase/util/mr_string.h>
#include <vx/Report.h>

using vxString::CString;

namespace {

constexpr int kMessageLevel = 0;
constexpr int kStyleBits = 0x7;

int order(int a, int b) {
  return a < b ? -1 : a != b;
}

}  // namespace

// Programs for Windows that take the address of a constant link with the definition here.
const int FontProperties::k_defaultFontSize;
const int FontProperties::k_minFontSize;
const int FontProperties::k_maxFontSize;
const int FontProperties::k_defaultFontStyle;
const int FontProperties::k_defaultFontWeight;
const int FontProperties::k_defaultFontPitch;
const int FontProperties::sizePropertyMask;
const int FontProperties::weightPropertyMask;
const int FontProperties::stylePropertyMask;
const int FontProperties::pitchPropertyMask;
const int FontProperties::familyPropertyMask;
const int FontProperties::allPropertiesMask;

FontProperties::FontProperties() = default;

FontProperties::FontProperties(int size) {
  setFontSize(size);
}

FontProperties::FontProperties(const CString& family, int size, int weight, int style, int pitch)
    : FontProperties(size) {
  setFontFamily(family);
  setFontWeight(weight);
  setFontStyle(style);
  setFontPitch(pitch);
}

// The family comes first: without memory for it nothing changes.
FontProperties& FontProperties::operator=(const FontProperties& other) {
  family_ = other.family_;
  size_ = other.size_;
  style_ = other.style_;
  weight_ = other.weight_;
  pitch_ = other.pitch_;
  return *this;
}

void FontProperties::setFontFamily(const CString& family) {
  const bool isValid = isValidFontFamily(family);
  if (!isValid) {
    rptDebug(kMessageLevel,
             "FontProperties::setFontFamily invalid name given %d, setting to default %d\n",
             MR_ptr2int(family.c_str()), MR_ptr2int(defaultFamily_.c_str()));
  }
  family_ = isValid ? family : defaultFamily_;
}

void FontProperties::setFontSize(int size) {
  size_ = clampToValidFontSize(size);
  if (isValidFontSize(size)) return;
  rptDebug(kMessageLevel,
           "FontProperties::setFontSize invalid fontsize %d, clamping to allowed range %d\n", size,
           size_);
}

void FontProperties::setFontStyle(int style) {
  if (isValidFontStyle(style)) {
    style_ |= style;
  } else {
    rptDebug(kMessageLevel, "FontProperties::setFontStyle invalid style given %d, ignoring\n",
             style);
  }
}

void FontProperties::setFontWeight(int weight) {
  weight_ = isValidFontWeight(weight) ? weight : k_defaultFontWeight;
  if (isValidFontWeight(weight)) return;
  rptDebug(kMessageLevel,
           "FontProperties::setFontWeight invalid weight given %d, setting to default %d\n", weight,
           weight_);
}

void FontProperties::setFontPitch(int pitch) {
  pitch_ = isValidFontPitch(pitch) ? pitch : k_defaultFontPitch;
  if (isValidFontPitch(pitch)) return;
  rptDebug(kMessageLevel,
           "FontProperties::setFontPitch invalid pitch given %d, setting to default %d\n", pitch,
           pitch_);
}

bool FontProperties::isValidFontFamily(const CString& family) {
  return !family.isEmpty();
}

bool FontProperties::isValidFontSize(int size) {
  return size >= k_minFontSize && size <= k_maxFontSize;
}

bool FontProperties::isValidFontStyle(int style) {
  return (style & ~kStyleBits) == 0;
}

bool FontProperties::isValidFontWeight(int weight) {
  return weight == 0 || weight == 50 || weight == 100;
}

bool FontProperties::isValidFontPitch(int pitch) {
  return pitch == 0 || pitch == 1;
}

int FontProperties::compare(const FontProperties& other, int mask) const {
  const struct {
    int mask, order;
  } numbers[] = {{sizePropertyMask, order(size_, other.size_)},
                 {weightPropertyMask, order(weight_, other.weight_)},
                 {stylePropertyMask, order(style_, other.style_)},
                 {pitchPropertyMask, order(pitch_, other.pitch_)}};
  for (const auto& number : numbers) {
    if ((mask & number.mask) != 0 && number.order != 0) return number.order;
  }
  return (mask & familyPropertyMask) != 0 ? family_.compare(other.family_) : 0;
}

bool FontProperties::isScaledEquivalent(const FontProperties& other) const {
  return compare(other, allPropertiesMask & ~sizePropertyMask) == 0;
}

const vx::vector<int>& FontProperties::getStandardFontSizes() {
  static const vx::vector<int> k_stdFontSizes = {8,  9,  10, 11, 12, 14, 16, 18,
                                                 20, 22, 24, 26, 28, 36, 48, 72};
  return k_stdFontSizes;
}

int FontProperties::clampToValidFontSize(int size) {
  return std::clamp(size, k_minFontSize, k_maxFontSize);
}

FontProperties* FontProperties_alloc() try {
  return new FontProperties;
} catch (const std::bad_alloc&) {
  return nullptr;
}

void FontProperties_free(FontProperties* font) {
  delete font;
}

void FontProperties_assign(FontProperties* target, const FontProperties* source) try {
  KILN_ASSERT(target != nullptr && source != nullptr);
  if (target && source) *target = *source;
} catch (const std::bad_alloc&) {
  return;  // the target is as it was
}

int FontProperties_getFontSize(const FontProperties* font) {
  return font ? font->getFontSize() : 0;
}

void FontProperties_setFontSize(FontProperties* font, int size) {
  if (font) font->setFontSize(size);
}
