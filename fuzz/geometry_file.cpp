// Files of meshes and kernel objects are read. The first byte chooses the kind of the file, and for
// most of them the rest is content in a record whose checksum fits.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <span>
#include <unistd.h>

#include <vx/KernelObject.h>
#include <vx/Mesh.h>
#include <vx/detail/Record.h>

namespace {

constexpr vx::detail::Magic kMesh = "VXMESH 1";
constexpr vx::detail::Magic kObject = "VXGKOBJ1";
constexpr int kKinds[] = {vxgk::kCurve, vxgk::kSurface, vxgk::kTrimmedSurface, vxgk::kShell};

void readObjects(std::FILE* file) {
  vxUtil::Error error;
  while (const std::unique_ptr<vxgk::Object> object{vxgk_read(file, error)}) {
    if (const auto* curve = dynamic_cast<const vxgk::Curve*>(object.get())) curve->at(0.5);
    if (const auto* surface = dynamic_cast<const vxgk::Surface*>(object.get())) surface->at(0.5, 1);
  }
}

template <class Mesh>
void readMesh(std::FILE* file) {
  Mesh mesh;
  std::rewind(file);
  static_cast<void>(vxGeom::meshRead(mesh, file));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  static std::FILE* const file = std::tmpfile();
  if (file == nullptr || ftruncate(fileno(file), 0) != 0) std::abort();
  std::rewind(file);
  const auto content = std::as_bytes(std::span(data + 1, size - 1));
  const int choice = data[0] % 7;
  if (choice < 4) vx::detail::writeRecord(file, kObject, kKinds[choice], content);
  if (choice == 4 || choice == 5) vx::detail::writeRecord(file, kMesh, choice - 3, content);
  if (choice == 6) std::fwrite(content.data(), 1, content.size(), file);
  std::rewind(file);
  readObjects(file);
  readMesh<vxGeom::CompactMesh>(file);
  readMesh<vxGeom::TopoMesh>(file);
  return 0;
}
