#include <vx/Error.h>

namespace vxUtil {

using vxString::BasicString;

template <class Char>
vx::vector<BasicString<Char>> split(const BasicString<Char>& text, bool (*isSeparator)(Char)) {
  const auto all = text.view();
  vx::vector<BasicString<Char>> words;
  std::size_t start = 0;
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (!isSeparator(all[i])) continue;
    words.emplace_back(all.substr(start, i - start));
    start = i + 1;
  }
  words.emplace_back(all.substr(start));
  return words;
}

template <class Char>
BasicString<Char> join(const vx::vector<BasicString<Char>>& words) {
  BasicString<Char> text;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (i > 0) text += Char(' ');
    text += words[i];
  }
  return text;
}

template VX_API vx::vector<BasicString<char>> split(const BasicString<char>&, bool (*)(char));
template VX_API vx::vector<BasicString<wchar_t>> split(const BasicString<wchar_t>&,
                                                       bool (*)(wchar_t));
template VX_API BasicString<char> join(const vx::vector<BasicString<char>>&);
template VX_API BasicString<wchar_t> join(const vx::vector<BasicString<wchar_t>>&);

}  // namespace vxUtil
