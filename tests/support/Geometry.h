// Meshes and kernel objects to send and to write, and files that are bytes.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <vx/File.h>
#include <vx/KernelObject.h>
#include <vx/Mesh.h>

#include "tests/support/TemporaryFolder.h"

namespace kilntest {

inline vxGeom::CompactMesh compactMesh() {
  return {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2}}, {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}}};
}

// A square and a triangle that meet at an edge.
inline vxGeom::TopoMesh topoMesh() {
  return {{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {2, 0, 0}}, {{0, 1, 2, 3}, {4, 2, 1}}};
}

inline vxgk::Surface surface() {
  return {{1, {0, 0, 1, 1}},
          {2, {0, 0, 0, 1, 1, 1}},
          {{0, 0, 0}, {0, 1, 2}, {0, 2, 0}, {1, 0, 0}, {1, 1, 2}, {1, 2, 0}},
          {1, 2, 1, 1, 2, 1}};
}

inline vxgk::TrimmedSurface trimmedSurface() {
  return {surface(),
          {{{1, {0, 0, 1, 2, 2}, {{0, 0}, {1, 0}, {0, 1}}}, {1, {0, 0, 1, 1}, {{0, 1}, {0, 0}}}}}};
}

// A quarter of a circle around the origin.
inline vxgk::Curve quarter() {
  return {2, {0, 0, 0, 1, 1, 1}, {{1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {1, std::sqrt(0.5), 1}};
}

inline std::vector<std::unique_ptr<vxgk::Object>> objects() {
  std::vector<std::unique_ptr<vxgk::Object>> made;
  made.push_back(std::make_unique<vxgk::Curve>(quarter()));
  made.push_back(std::make_unique<vxgk::Surface>(surface()));
  made.push_back(std::make_unique<vxgk::TrimmedSurface>(trimmedSurface()));
  made.push_back(std::make_unique<vxgk::Shell>(std::vector{trimmedSurface(), trimmedSurface()}));
  return made;
}

// What `write` writes into a file.
inline std::string written(const std::function<void(std::FILE*)>& write) {
  const TemporaryFolder folder;
  std::FILE* file = vxOS::openFile((folder.path() / "file").string(), "wb");
  write(file);
  std::fclose(file);
  return readFile(folder.path() / "file");
}

// Calls `read` with a file of these bytes.
inline void withFile(const std::string& bytes, const std::function<void(std::FILE*)>& read) {
  static const TemporaryFolder folder;
  std::FILE* file = vxOS::openFile(folder.write("file", bytes).string(), "rb");
  read(file);
  std::fclose(file);
}

template <class Mesh>
std::string fileOf(const Mesh& mesh) {
  return written([&](std::FILE* file) { vxGeom::meshWrite(mesh, file); });
}

inline std::string fileOf(const std::vector<std::unique_ptr<vxgk::Object>>& objects) {
  return written([&](std::FILE* file) {
    for (const auto& object : objects) vxgk_write(file, object.get());
    vxgk_write(file, nullptr);
  });
}

// The first record of a file with one of its numbers replaced and a checksum that fits again.
template <class Number>
std::string forged(std::string file, std::size_t at, Number number) {
  std::memcpy(&file[at], &number, sizeof number);
  std::uint64_t size, state = 0;
  std::memcpy(&size, &file[16], 8);
  const std::string checked = file.substr(0, 24) + file.substr(32, size);
  for (std::size_t i = 0; i < checked.size(); i += 8) {
    std::uint64_t word = 0;
    std::memcpy(&word, &checked[i], std::min<std::size_t>(8, checked.size() - i));
    state = (state ^ word) * 0x9e3779b97f4a7c15;
    state ^= state >> 32;
  }
  std::memcpy(&file[24], &state, 8);
  return file;
}

// All cuts of a file, all changes of one byte, and a byte too many.
inline std::vector<std::string> damaged(const std::string& file) {
  std::vector<std::string> found = {file + '\0'};
  for (std::size_t i = 0; i < file.size(); ++i) {
    found.push_back(file.substr(0, i));
    found.push_back(file);
    found.back()[i] = static_cast<char>(found.back()[i] ^ (i % 2 == 0 ? 1 : 0x80));
  }
  return found;
}

}  // namespace kilntest
