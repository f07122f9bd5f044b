#include <cstdlib>
#include <forward_list>

#include <kilnbase/util/DS/ds_structures.h>
#include <kilnbase/util/DS/mr_register.h>

#include "Data.h"
#include "families/Families.h"

namespace bench {

namespace {

// Numbers to sort by; in the order of one those of the other are random.
struct Item {
  int first;
  int second;
};

std::vector<Item> randomItems(int count) {
  std::vector<Item> items;
  const std::vector<int> second = shuffledNumbers(count, 2);
  for (const int first : shuffledNumbers(count, 1)) {
    items.push_back({first, second[items.size()]});
  }
  return items;
}

template <int Item::*number>
int compareSlots(const void* a, const void* b) {
  const int x = (*static_cast<const Item* const*>(a))->*number;
  const int y = (*static_cast<const Item* const*>(b))->*number;
  return (x > y) - (x < y);
}

// Sorts by the one number, then by the other.
class Pointers {
 public:
  explicit Pointers(int count) : items_(randomItems(count)) {
    for (Item& item : items_) pointers_.push_back(&item);
  }

  void sort() {
    sortBy(compareSlots<&Item::first>);
    sortBy(compareSlots<&Item::second>);
  }

  Values firstNumbers() const {
    Values numbers;
    for (const Item* item : pointers_) numbers.push_back(item->first);
    return numbers;
  }

 private:
  void sortBy(DS_Comparator comparator) {
    std::qsort(pointers_.data(), pointers_.size(), sizeof(Item*), comparator);
  }

  std::vector<Item> items_;
  std::vector<const Item*> pointers_;
};

struct Destroy {
  void operator()(DS_Structure* structure) const {
    DS_destructor(&structure, nullptr, nullptr, nullptr);
  }
};

using OwnedStructure = std::unique_ptr<DS_Structure, Destroy>;

template <int kind>
class Structure {
 public:
  explicit Structure(int count)
      : items_(randomItems(count)), structure_(DS_create_type(kind, nullptr, __LINE__, __FILE__)) {
    for (Item& item : items_) methods().add(structure_.get(), &item, nullptr);
  }

  void sort() {
    sortBy(compareSlots<&Item::first>);
    sortBy(compareSlots<&Item::second>);
  }

  Values firstNumbers() const {
    Values numbers;
    DS_Position position = methods().head(structure_.get(), nullptr);
    for (; position != nullptr; position = methods().next(structure_.get(), position, nullptr)) {
      numbers.push_back(static_cast<const Item*>(methods().get_data(position, nullptr))->first);
    }
    return numbers;
  }

 private:
  const DS_Methods& methods() const { return *structure_->methods; }

  void sortBy(DS_Comparator comparator) {
    structure_->comparator = comparator;
    methods().sort(structure_.get(), nullptr);
  }

  std::vector<Item> items_;
  OwnedStructure structure_;
};

template <class Sorted>
Contestant sorts(const Shape& shape) {
  const auto run = [items = std::make_shared<Sorted>(shape.rows)] {
    items->sort();
    return items.get();
  };
  return contestant(run, [](const Sorted* items) { return items->firstNumbers(); });
}

template <int kind>
void addSort(Suite& suite, const std::string& name, double limit) {
  suite.add({"sort " + name,
             {{1000, 1}, {100000, 1}, {1000000, 1}},
             {"qsort"},
             [limit](const Shape&) { return Limits{.named = limit}; },
             sorts<Structure<kind>>,
             {{"qsort", sorts<Pointers>}}});
}

class Registry {
 public:
  explicit Registry(std::vector<int>& values) {
    DS_Structure* registry = nullptr;
    for (int id = 0; int& value : values) MR_register_item(id++, &value, &registry, nullptr);
    registry_.reset(registry);
  }

  void* find(int id) const { return MR_get_id_registration(id, registry_.get(), nullptr); }

 private:
  struct Clear {
    void operator()(DS_Structure* registry) const {
      MR_clear_registrations(registry, nullptr);
      Destroy()(registry);
    }
  };

  std::unique_ptr<DS_Structure, Clear> registry_;
};

class LinkedIds {
 public:
  explicit LinkedIds(std::vector<int>& values) {
    auto last = entries_.before_begin();
    for (int id = 0; int& value : values) last = entries_.insert_after(last, {id++, &value});
  }

  void* find(int id) const {
    for (const Entry& entry : entries_) {
      if (entry.id == id) return entry.value;
    }
    return nullptr;
  }

 private:
  struct Entry {
    int id;
    void* value;
  };

  std::forward_list<Entry> entries_;
};

// Looks up all ids.
template <class Table>
Contestant looksUp(const Shape& shape) {
  const auto values = std::make_shared<std::vector<int>>(shuffledNumbers(shape.rows, 1));
  const auto table = std::make_shared<Table>(*values);
  const auto run = [values, table, ids = shuffledNumbers(shape.rows, 2)] {
    double sum = 0.0;
    for (const int id : ids) sum += *static_cast<const int*>(table->find(id)) % (id + 1);
    return sum;
  };
  return contestant(run, [](double sum) { return Values{sum}; });
}

}  // namespace

void addStructures(Suite& suite) {
  addSort<DS_ARRAY>(suite, "array", 1.0);
  addSort<DS_DLIST>(suite, "dlist", 1.2);
  addSort<DS_SLIST>(suite, "slist", 1.2);
  addSort<DS_BINTREE>(suite, "bintree", 1.1);
  suite.add({"registry look-up",
             {{1000, 1}},
             {"list"},
             [](const Shape&) { return Limits{.named = 1.0}; },
             looksUp<Registry>,
             {{"list", looksUp<LinkedIds>}}});
}

}  // namespace bench
