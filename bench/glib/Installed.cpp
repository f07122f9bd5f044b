#include <glib.h>

#include "families/Families.h"
#include "families/Trees.h"

namespace bench {

namespace {

class Tree {
 public:
  explicit Tree(std::vector<int> numbers) : numbers_(std::move(numbers)) {}

  void clear() { tree_.reset(g_tree_new(compareNumbers())); }
  void insert(std::size_t i) { g_tree_insert(tree_.get(), &numbers_[i], &numbers_[i]); }

  int find(int number) const {
    return *static_cast<const int*>(g_tree_lookup(tree_.get(), &number));
  }

  void walk(long long& sum) const {
    const auto add = [](gpointer number, gpointer, gpointer total) -> gboolean {
      *static_cast<long long*>(total) += *static_cast<const int*>(number);
      return FALSE;
    };
    g_tree_foreach(tree_.get(), add, &sum);
  }

 private:
  struct Release {
    void operator()(GTree* tree) const { g_tree_unref(tree); }
  };

  std::vector<int> numbers_;
  std::unique_ptr<GTree, Release> tree_{g_tree_new(compareNumbers())};
};

}  // namespace

std::string addGlib(Suite& suite) {
  addTreePeer<Tree>(suite, "GTree");
  return "GTree: GLib " + std::to_string(glib_major_version) + "." +
         std::to_string(glib_minor_version) + "." + std::to_string(glib_micro_version);
}

}  // namespace bench
