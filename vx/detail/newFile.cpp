#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include <vx/detail/newFile.h>
#include <vx/os/File.h>
#include <vx/os/Random.h>

namespace vxOS::detail {

using vxString::CString;

namespace {

CString randomName(std::size_t count) {
  // 32 characters, none of which is another one's capital: some systems take capitals for the same.
  constexpr std::string_view kCharacters = "abcdefghijklmnopqrstuvwxyz234567";
  std::array<std::uint8_t, 256> bytes;
  const auto used = std::span(bytes).first(count);
  random::fill(used);
  CString name;
  for (const std::uint8_t byte : used) name += kCharacters[byte % kCharacters.size()];
  return name;
}

}  // namespace

CString makeNewFile(const CString& stem, std::size_t count,
                    const std::function<int(const CString&)>& make) {
  constexpr int kAttempts = 100;
  for (int i = 0; i < kAttempts; ++i) {
    CString path = stem + randomName(count);
    const int error = make(path);
    if (error == 0) return path;
    if (!file::meansExists(error)) break;
  }
  return {};
}

}  // namespace vxOS::detail
