#include <cstddef>
#include <cstdint>
#include <cstring>

#include <kilnbase/util/mr_pixels.h>

namespace {

// The component types of OpenGL.
enum GlType { kByte = 5120, kUnsignedByte, kShort, kUnsignedShort, kInt, kUnsignedInt, kFloat };

template <class Component>
void reverseComponents(std::size_t pixelCount, void* pixels, const void* source) {
  struct Pixel {
    Component components[4];
  };
  auto* to = static_cast<std::byte*>(pixels);
  auto* from = static_cast<const std::byte*>(source);
  for (std::size_t i = 0; i < pixelCount; ++i) {
    Pixel pixel;
    std::memcpy(&pixel, from + i * sizeof pixel, sizeof pixel);
    const auto& [a, b, c, d] = pixel.components;
    pixel = {{d, c, b, a}};
    std::memcpy(to + i * sizeof pixel, &pixel, sizeof pixel);
  }
}

}  // namespace

void MR_SwapColourChannels(int width, int height, int type, void* pixels, const void* source) {
  if (width < 1 || height < 1 || !pixels) return;
  const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  const void* const from = source ? source : pixels;
  switch (type) {
    case kByte:
    case kUnsignedByte:
      return reverseComponents<std::uint8_t>(count, pixels, from);
    case kShort:
    case kUnsignedShort:
      return reverseComponents<std::uint16_t>(count, pixels, from);
    case kInt:
    case kUnsignedInt:
    case kFloat:
      return reverseComponents<std::uint32_t>(count, pixels, from);
    default:
      return;
  }
}
