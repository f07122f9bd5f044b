#include <gtest/gtest.h>
#include <string>

#include <kilnbase/util/mr_pixels.h>

TEST(Pixels, ComponentsChangeTheirOrderAndKeepTheirBytes) {
  const std::string source = "abcdefghijklmnop";
  const std::string bytes = "dcbahgfelkjiponm", shorts = "ghefcdabopmnklij";
  const std::string ints = "mnopijklefghabcd";
  const std::string results[] = {source, bytes, bytes, shorts, shorts, ints, ints, ints, source};
  const int counts[] = {1, 4, 4, 2, 2, 1, 1, 1, 1};
  for (int i = 0; i < 9; ++i) {
    const int type = 5119 + i;
    std::string copied = source, inPlace = source;
    MR_SwapColourChannels(counts[i], 1, type, copied.data(), source.data());
    EXPECT_EQ(results[i], copied) << type;
    MR_SwapColourChannels(3, -2, type, inPlace.data(), nullptr);
    MR_SwapColourChannels(1, 1, type, nullptr, source.data());
    MR_SwapColourChannels(1, counts[i], type, inPlace.data(), nullptr);
    EXPECT_EQ(results[i], inPlace) << type;
  }
}
