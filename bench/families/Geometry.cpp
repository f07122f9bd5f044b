#include <algorithm>
#include <map>

#include "families/Families.h"
#include "geometry/Libraries.h"

namespace bench {

namespace {

using geometry::Library;
using geometry::Way;

const std::vector<Shape> kFew = {{100, 1}};
// More matrices than the branches of an elimination can be learnt by heart for.
const std::vector<Shape> kFewAndFresh = {{100, 1}, {4000, 1}};
const std::vector<Shape> kMany = {{1000, 1}, {1000000, 1}};

struct Plan {
  std::string operation;
  std::vector<Shape> shapes;
  Limits limits = {.best = 1.0};
  std::vector<std::string> namedPeers = {};
};

// What is measured, on how many values, and the ratios to reach.
const std::vector<Plan> kPlans = {
    {"4x4 product", kFew},
    {"4x4 inverse", kFewAndFresh, {.best = 1.2, .named = 0.6}, {"Imath"}},
    {"3x3 determinant", kFew},
    {"points times 4x4", kMany},
    {"vectors times 4x4", kMany},
    {"vector normalised", kFew},
    {"quaternion product", kFew},
    {"quaternion to 4x4", kFew},
    {"quaternion normalised", kFew}};

void addAll(Suite& suite, const std::vector<Library>& libraries, const std::string& flags) {
  for (const Library& library : libraries) {
    for (const Way& way : library.ways) {
      const std::string name = way.operation + ", " + flags;
      const auto plan = std::ranges::find(kPlans, way.operation, &Plan::operation);
      const auto limits = [=](const Shape&) { return plan->limits; };
      if (library.name.empty()) {
        suite.add({name, plan->shapes, plan->namedPeers, limits, way.make, {}});
      } else {
        suite.addPeer(name, {library.name, way.make});
      }
    }
  }
}

}  // namespace

std::vector<std::string> addGeometry(Suite& suite) {
  const std::vector<Library> libraries = geometry::baseline::libraries();
  addAll(suite, libraries, "x86-64");
  addAll(suite, geometry::native::libraries(), "native");
  std::vector<std::string> notes;
  const std::map<std::string, std::string> packages = {{"Imath", "libimath-dev"},
                                                       {"GLM", "libglm-dev"}};
  for (const auto& [name, package] : packages) {
    if (std::ranges::find(libraries, name, &Library::name) != libraries.end()) continue;
    notes.push_back(name + ": not installed when this program was built, left out (" + package +
                    ")");
  }
  return notes;
}

}  // namespace bench
