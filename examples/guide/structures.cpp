// The program of docs/guide/structures.md.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <string>
#include <string_view>

#include <kilnbase/util/DS/ds_structures.h>
#include <kilnbase/util/DS/mr_register.h>
#include <kilnbase/util/mr_array.h>
#include <kilnbase/util/mr_avl.h>
#include <kilnbase/util/mr_bitfield.h>
#include <kilnbase/util/mr_linklist.h>
#include <kilnbase/util/mr_list.h>
#include <kilnbase/util/mr_pool.h>

#include "examples/guide/expect.h"

namespace {

using guide::expect;

void borrowed() {
  //! [shortest]
  char wing[] = "wing", nose[] = "nose";
  MR_List names = {nullptr};
  MR_list_append(&names, wing);  // the list makes a node, and borrows the name
  MR_list_prepend(&names, nose);
  std::string text;
  for (MR_ListNode* node = names.head; node; node = node->next)
    text += static_cast<char*>(node->data);
  MR_list_delete_all(&names);  // the nodes; the names stay
  expect(text == "nosewing");
  //! [shortest]
}

//! [knot]
struct Knot {
  MR_LinkNode link;  // the first field
  double parameter;
};

int32_t compareKnots(const void* a, const void* b) {
  const double left = static_cast<const Knot*>(a)->parameter;
  const double right = static_cast<const Knot*>(b)->parameter;
  return (left > right) - (left < right);
}
//! [knot]

void ownRecords() {
  //! [own]
  Knot end = {{}, 1.0}, start = {{}, 0.0}, middle = {{}, 0.5};
  MR_LinkList knots = {nullptr};
  for (Knot* knot : {&end, &start, &middle}) MR_ll_insert_sorted(&knots, &knot->link, compareKnots);
  expect(knots.head == &start.link);
  MR_ll_remove(&knots, &middle.link);  // unlinks; the record is still ours
  expect(MR_ll_length(knots.head) == 2);
  //! [own]
}

//! [curve]
struct Curve {
  MR_AvlNode node;  // the first field
  int32_t id;
};

int compareIds(const void* a, const void* b) {
  const int32_t left = static_cast<const Curve*>(a)->id, right = static_cast<const Curve*>(b)->id;
  return (left > right) - (left < right);
}
//! [curve]

void byKey() {
  //! [tree]
  Curve curves[] = {{{}, 30}, {{}, 10}, {{}, 20}};
  MR_AvlNode* root = nullptr;
  for (Curve& curve : curves) MR_avl_insert(&root, &curve.node, compareIds);
  Curve twin = {{}, 20};
  expect(MR_avl_insert(&root, &twin.node, compareIds) == 1);  // there is a curve 20 already
  const Curve key = {{}, 20};
  expect(MR_avl_find(root, &key, compareIds) == &curves[2].node);
  expect(MR_avl_next(root, &key, compareIds) == &curves[0].node);
  //! [tree]
}

//! [length]
int compareLengths(const void* a, const void* b) {  // of slots, as for qsort
  const auto length = [](const void* slot) {
    return std::string_view(static_cast<const char*>(*static_cast<void* const*>(slot))).size();
  };
  return length(a) == length(b) ? 0 : length(a) > length(b) ? 1 : -1;  // exactly 1 for greater
}

int isShort(void* item) {
  return std::string_view(static_cast<char*>(item)).size() < 6;
}

int addText(void* item, void* text, StatusCode*) {
  *static_cast<std::string*>(text) += std::string(static_cast<char*>(item)) + ' ';
  return 1;
}
//! [length]

void generic(int kind) {
  char wing[] = "wing", fuselage[] = "fuselage", fin[] = "fin";
  //! [generic]
  StatusCode status = MR_NO_ERROR;
  DS_Structure* parts = DS_create_type(kind, &status, __LINE__, __FILE__);
  parts->comparator = compareLengths;  // before the first item
  for (char* part : {wing, fuselage, fin}) parts->methods->add(parts, part, &status);
  std::string text;
  parts->methods->walk(parts, addText, &text, -1, 0, &status);
  expect(text == "fin wing fuselage ");

  parts->filter = isShort;  // hides items from walks, counts, look-ups and copies
  expect(parts->methods->enumerate(parts, &status) == 2);
  expect(parts->methods->contains_item(parts, fuselage, &status) == 0);
  expect(status == MR_ITEM_NOT_FOUND);

  DS_destructor(&parts, nullptr, nullptr, &status);  // all nodes; the items stay
  expect(parts == nullptr);
  //! [generic]
}

//! [free]
int freeItem(DS_Position position, void* count) {
  std::free(*static_cast<void**>(position));  // the first word of a position is the item
  ++*static_cast<int*>(count);
  return 1;
}
//! [free]

void ownedItems() {
  //! [freeing]
  StatusCode status = MR_NO_ERROR;
  DS_Structure* blocks = DS_create_type(DS_SLIST, &status, __LINE__, __FILE__);
  for (int i = 0; i < 3; ++i) blocks->methods->add(blocks, std::malloc(8), &status);
  int freed = 0;
  DS_destructor(&blocks, freeItem, &freed, &status);
  expect(freed == 3);
  //! [freeing]
}

void positions() {
  //! [positions]
  char a[] = "a", b[] = "b", c[] = "c";
  StatusCode status = MR_NO_ERROR;
  DS_Structure* list = DS_create_type(DS_DLIST, &status, __LINE__, __FILE__);
  for (char* item : {a, b, c}) list->methods->add(list, item, &status);  // in order of arrival
  DS_Position at = list->methods->head(list, &status);
  while (at) {
    void* item = list->methods->get_data(at, &status);
    at = item == b ? list->methods->remove(list, item, nullptr, nullptr, &status)
                   : list->methods->next(list, at, &status);
  }
  expect(list->methods->enumerate(list, &status) == 2);
  DS_destructor(&list, nullptr, nullptr, &status);
  //! [positions]
}

void registry() {
  //! [registry]
  int pen = 1, brush = 2;
  StatusCode status = MR_NO_ERROR;
  DS_Structure* tools = nullptr;  // made by the first registration
  MR_register_item(7, &pen, &tools, &status);
  MR_register_item(9, &brush, &tools, &status);
  expect(MR_get_id_registration(9, tools, &status) == &brush);
  expect(MR_get_items_registration_id(&pen, tools, &status) == 7);
  MR_clear_registrations(tools, &status);
  DS_destructor(&tools, nullptr, nullptr, &status);
  //! [registry]
}

void arrays() {
  //! [array]
  MR_Array* lengths = MR_array_new(sizeof(double), 0, 64);  // grows in steps of 64
  const double length = 2.5;
  MR_array_put(lengths, 7, &length);
  const auto* first = static_cast<const double*>(MR_array_get(lengths, 0));
  expect(first[7] == 2.5);
  expect(first[6] == 0.0);           // never put
  expect(lengths->count == 7 + 64);  // all that is allocated counts
  MR_array_free(&lengths);
  //! [array]
}

void pools() {
  //! [pool]
  MR_Pool* pool = MR_pool_new(1 << 16);
  auto* knots = new (MR_pool_alloc(pool, 100 * sizeof(Knot))) Knot[100];
  knots[99].parameter = 0.25;
  MR_pool_free(&pool);  // all pieces at once; destructors do not run
  expect(pool == nullptr);
  //! [pool]
}

void bits() {
  //! [bits]
  std::uint8_t layers[2] = {};  // room for bits 1 to 16
  MR_bitfield_set(layers, 9);
  const int32_t wanted[] = {3, 9, 0};  // lists end with 0
  expect(MR_bitfield_is_any_set(layers, wanted) == 1);
  expect(layers[1] == 1);
  //! [bits]
}

}  // namespace

int main() {
  borrowed();
  ownRecords();
  byKey();
  for (const int kind : {DS_DLIST, DS_SLIST, DS_BINTREE, DS_ARRAY}) generic(kind);
  ownedItems();
  positions();
  registry();
  arrays();
  pools();
  bits();
}
