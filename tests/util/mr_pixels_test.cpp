#include <cstdint>
#include <gtest/gtest.h>
#include <numeric>
#include <vector>

#include <kilnbase/util/mr_pixels.h>

// Three by two pixels, whose bytes count up from 0.
TEST(Pixels, ComponentsChangeTheirOrderAndKeepTheirBytes) {
  const struct {
    int type;
    std::size_t width;
  } cases[] = {{5119, 0}, {5120, 1}, {5121, 1}, {5122, 2}, {5123, 2},
               {5124, 4}, {5125, 4}, {5126, 4}, {5127, 0}};
  for (const auto& [type, width] : cases) {
    std::vector<std::uint8_t> source(width == 0 ? 24 : 24 * width);
    std::iota(source.begin(), source.end(), std::uint8_t{0});
    std::vector<std::uint8_t> reversed(source);
    for (std::size_t i = 0; width != 0 && i < source.size(); ++i) {
      const std::size_t pixel = i / (4 * width);
      const std::size_t component = i / width % 4;
      reversed[(4 * pixel + 3 - component) * width + i % width] = source[i];
    }
    std::vector<std::uint8_t> copied = source;
    MR_SwapColourChannels(3, 2, type, copied.data(), source.data());
    EXPECT_EQ(reversed, copied) << type;
    MR_SwapColourChannels(3, -2, type, copied.data(), source.data());
    EXPECT_EQ(reversed, copied) << type;
    MR_SwapColourChannels(3, 2, type, source.data(), nullptr);
    EXPECT_EQ(reversed, source) << type;
  }
}
