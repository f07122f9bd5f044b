#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include <kilnbase/detail/heapText.h>
#include <kilnbase/util/DS/ds_structures.h>
#include <kilnbase/util/aa_debug.h>
#include <vx/File.h>

namespace {

struct FileEntry {
  char* name;
  bool wasOpened;
};

constinit std::int32_t mode = AA_TO_ERROR;
constinit FileEntry* file = nullptr;    // the chosen file
constinit std::FILE* stream = nullptr;  // the caller's stream, or the chosen file while it is open
constinit DS_Structure* files = nullptr;  // every file ever named
constinit std::int32_t indentation = 0;

void complain(const char* message) {
  AA_indent();
  AA_debug_print("%s", message);
}

std::FILE* openedFile() {
  if (!stream) stream = vxOS::openFile(file->name, file->wasOpened ? "a" : "w");
  if (!stream) return stdout;
  file->wasOpened = true;
  return stream;
}

std::FILE* output() {
  switch (mode) {
    case AA_TO_OUTPUT:
      return stdout;
    case AA_TO_FILE:
      return openedFile();
    case AA_TO_STREAM:
      return stream;
    default:
      return stderr;
  }
}

void closeFile() {
  if (mode == AA_TO_FILE && stream) std::fclose(std::exchange(stream, nullptr));
}

void choose(std::int32_t newMode, FileEntry* newFile, std::FILE* newStream) {
  closeFile();
  mode = newMode;
  file = newFile;
  stream = newStream;
}

int hasName(const void* item, const void* name) {
  const auto* const entry = static_cast<const FileEntry*>(item);
  return std::strcmp(entry->name, static_cast<const char*>(name)) == 0 ? 1 : 0;
}

FileEntry* addEntry(const char* name) {
  char* const copy = vxKilnBase::detail::heapText(name);
  auto* const entry = new (std::nothrow) FileEntry{copy, false};
  if (copy && entry && files->methods->add(files, entry, nullptr)) return entry;
  std::free(copy);
  delete entry;
  return nullptr;
}

FileEntry* entryOf(const char* name) {
  void* const found = files->methods->find(files, hasName, name, nullptr);
  return found ? static_cast<FileEntry*>(files->methods->get_data(found, nullptr)) : addEntry(name);
}

void chooseFile(const char* name) {
  if (!name) return complain("Cannot open debug output file\n");
  if (!files) files = DS_create_type(DS_SLIST, nullptr, __LINE__, __FILE__);
  if (!files) return complain("Cannot create debug file list\n");
  FileEntry* const entry = entryOf(name);
  if (!entry) return complain("Cannot create debug file entry\n");
  choose(AA_TO_FILE, entry, nullptr);
}

// Kept as it is: a null stream leaves the output as it is, but closes the file of it until the next
// text.
void chooseStream(std::FILE* callers) {
  if (!callers) return closeFile();
  choose(AA_TO_STREAM, nullptr, callers);
}

// The level wraps around at its limits.
void shiftIndentation(std::int32_t levels) {
  indentation = static_cast<std::int32_t>(static_cast<std::uint32_t>(indentation) +
                                          static_cast<std::uint32_t>(levels));
}

}  // namespace

int AA_debug_print(const char* format, ...) {
  std::FILE* const to = output();
  std::va_list arguments;
  va_start(arguments, format);
  const int written = std::vfprintf(to, format, arguments);
  va_end(arguments);
  std::fflush(to);
  return written;
}

void AA_set_print_out(int newMode, const void* name_or_stream) {
  switch (newMode) {
    case AA_TO_FILE:
      return chooseFile(static_cast<const char*>(name_or_stream));
    case AA_TO_STREAM:
      return chooseStream(static_cast<std::FILE*>(const_cast<void*>(name_or_stream)));
    default:
      return choose(newMode, nullptr, nullptr);
  }
}

int AA_get_print_out(const char** name) {
  if (mode == AA_TO_FILE && name) *name = file->name;
  return mode;
}

void AA_set_indent(int level) {
  switch (level) {
    case -1:
      return shiftIndentation(1);
    case -2:
      return shiftIndentation(-1);
    default:
      indentation = level;
  }
}

int AA_indent() {
  for (std::int32_t level = 0; level < indentation; ++level) AA_debug_print("   ");
  return 1;
}

int Aa_print_assert(const char* file, int line, const char* message) {
  AA_indent();
  return AA_debug_print("ASSERT (file %s, line %d): %s", file, line, message);
}
