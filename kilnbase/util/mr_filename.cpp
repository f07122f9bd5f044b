#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include <kilnbase/detail/heapText.h>
#include <kilnbase/util/db_filename.h>
#include <kilnbase/util/detail/expansion.h>
#include <kilnbase/util/mr_filename.h>
#include <vx/Memory.h>
#include <vx/PixName.h>

using vxKilnBase::detail::Expansion;
using vxString::CString;

namespace {

constexpr const char* kCompressed = ".Z";
constexpr int kToRead = 1;
constexpr std::size_t kPathSize = 264;

constexpr const char* kTypeNames[] = {
    "ANIM_DATA",    "PIX_DATA",  "SDL_DATA",    "WIRE_DATA",       "MASK_DATA",    "PIXAR_DATA",
    "DIR_DATA",     "PROJ_DATA", "ANY_DATA",    "MISC_DATA",       "DEFAULT_DATA", "ANYDIR_DATA",
    "OPTION_DATA",  "FBI_DATA",  "BROWSE_DATA", "PLOT_DATA",       "SLA_DATA",     "SHADER_DATA",
    "TEXTURE_DATA", "TEXT_DATA", "STAGE_DATA",  "SOURCEPIX_DATA",  "DEBUG_DATA",   nullptr,
    "WINDOW_DATA",  "RIB_DATA",  "LIGHT_DATA",  "ENVIRONMENT_DATA"};

const char* typeName(int type) {
  if (type == SOUND_DATA) return "SOUND_DATA";
  const bool isInTable = type >= 0 && type < static_cast<int>(std::size(kTypeNames));
  return isInTable && kTypeNames[type] ? kTypeNames[type] : "UNKNOWN";
}

char* copyOf(std::string_view text) {
  char* const copy = vxKilnBase::detail::heapText(text);
  return copy ? copy : throw std::bad_alloc();
}

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

// Whether the dot stands between a basename and a frame.
bool separatesFrame(std::string_view name, std::size_t dot) {
  return dot != name.npos && dot > 0 && dot + 1 < name.size() && isDigit(name[dot + 1]);
}

// The position of the dot in front of the frame; npos without a frame.
std::size_t frameDot(std::string_view name) {
  std::size_t dot = name.rfind('.');
  const std::size_t separator = name.find_last_of("/\\");
  if (dot == name.npos || (separator != name.npos && dot < separator)) return name.npos;
  if (dot > 0 && name.substr(dot + 1).starts_with('Z')) dot = name.rfind('.', dot - 1);
  return separatesFrame(name, dot) ? dot : name.npos;
}

std::int32_t frameNumber(const char* digits) {
  constexpr long long kLargest = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::min(std::strtoll(digits, nullptr, 10), kLargest));
}

// Asks for the image whose path, with any ending, stands at `out`.
bool findImage(char* out) {
  *std::strrchr(out, '.') = '\0';
  const std::unique_ptr<char, decltype(&MA_free)> image(Ar_expand_pixname(out, kToRead), &MA_free);
  // One character less than `out` has room for: callers copy to arrays of 260.
  if (!image || std::strlen(image.get()) >= vxKilnBase::detail::kLongestPath) return false;
  if (!vxKilnBase::detail::exists(image.get())) return false;
  vxKilnBase::detail::copyText(out, image.get());
  return true;
}

}  // namespace

MR_Filename::MR_Filename() : MR_Filename("", PIX_DATA) {}

MR_Filename::MR_Filename(const char* newName, int newType) : type(newType) {
  setFilename(newName);
}

MR_Filename::~MR_Filename() {
  std::free(name);
  std::free(basename);
}

int MR_Filename::setFilename(const char* newName) {
  if (name && newName && std::strcmp(name, newName) == 0) return 1;
  char* const copy = newName ? copyOf(newName) : nullptr;
  std::free(std::exchange(name, copy));
  std::free(std::exchange(basename, nullptr));
  if (!name) return 1;
  const std::size_t dot = frameDot(name);
  sequence = dot != std::string_view::npos;
  if (sequence == 0) return 1;
  frame = frameNumber(name + dot + 1);
  width = std::max(width, static_cast<std::int32_t>(std::strspn(name + dot + 1, "0")));
  name[dot] = '\0';
  basename = std::exchange(name, nullptr);
  return 1;
}

const char* MR_Filename::BaseFilename() const {
  return basename ? basename : name;
}

int MR_Filename::Filename(char* out) {
  if (!out) return 0;
  *out = '\0';
  if (!BaseFilename()) return 0;
  return sequence != 0 ? findFrame(out) : findForm(out, name);
}

int MR_Filename::CheckStatus() {
  char path[kPathSize];
  return Filename(path);
}

int MR_Filename::setFrame(int newFrame) {
  if (newFrame != frame) sequence = 1;
  return std::exchange(frame, newFrame);
}

int MR_Filename::getFrameRange(int* first, int* last, int* count) const {
  if (first) *first = -1;
  if (last) *last = std::numeric_limits<std::int32_t>::max();
  if (count) *count = 0;
  return 1;
}

int MR_Filename::getFrameRange(DS_Structure*) const {
  return 1;
}

void MR_Filename::debug() {
  std::printf("TYPE: MR_Filename\n");
  std::printf("  Filename:  %s\n", name ? name : "NULL");
  std::printf("  Basename:  %s\n", basename ? basename : "NULL");
  char path[kPathSize];
  const bool isFound = Filename(path) != 0;
  std::printf("  Expanded:  %s\n", isFound ? "(none)" : path);
  std::printf("  Sequence:  %s\n", sequence != 0 ? "YES" : "NO");
  std::printf("  Type:      %s\n", typeName(type));
  std::printf("  Frame:     %d\n", frame);
}

// Stores the path that it tries last.
bool MR_Filename::findForm(char* out, char* candidate) const {
  const Expansion expansion = vxKilnBase::detail::expand(candidate, type);
  const CString path = expansion.path.value_or("");
  vxKilnBase::detail::copyText(out, path);
  if (!expansion.isWhole) return false;
  if (vxKilnBase::detail::exists(out)) return true;
  vxKilnBase::detail::copyText(out, path + kCompressed);
  if (vxKilnBase::detail::exists(out)) return true;
  return (type == PIX_DATA || type == MASK_DATA) && findImage(out);
}

// A name that is too long has no file, and a name with more digits has none either.
bool MR_Filename::findFrame(char* out) const {
  for (int digits = 1; basename && digits - 1 <= width; ++digits) {
    const CString numbered = CString::format("%s.%0*d", basename, digits, frame);
    if (numbered.length() > vxKilnBase::detail::kLongestPath) break;
    std::string candidate(numbered.view());
    if (findForm(out, candidate.data())) return true;
  }
  vxKilnBase::detail::copyText(out, vxKilnBase::detail::expand(basename, type).path.value_or(""));
  return false;
}
