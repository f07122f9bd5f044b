/* Each family of plain functions, used once from C. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <kilnbase/anim/an_anim_list.h>
#include <kilnbase/util/DS/ds_structures.h>
#include <kilnbase/util/DS/mr_register.h>
#include <kilnbase/util/aa_debug.h>
#include <kilnbase/util/mr_array.h>
#include <kilnbase/util/mr_avl.h>
#include <kilnbase/util/mr_bitfield.h>
#include <kilnbase/util/mr_linklist.h>
#include <kilnbase/util/mr_list.h>
#include <kilnbase/util/mr_pixels.h>
#include <kilnbase/util/mr_pool.h>
#include <kilnbase/util/mr_status.h>
#include <kilnbase/util/mr_string.h>
#include <kilnbase/util/mr_tolerance.h>
#include <kilnbase/util/mr_warning.h>
#include <vx/Memory.h>
#include <vx/Report.h>

static int arrays(void) {
  const short element = 5;
  MR_Array* array = MR_array_new(sizeof element, 0, 2);
  MR_array_put(array, 3, &element);
  const int right = *(const short*)MR_array_get(array, 3) == element;
  MR_array_free(&array);
  return right && !array;
}

static int bytes(void) {
  char rgba[] = "rgba";
  MR_SwapColourChannels(1, 1, 5121, rgba, NULL);
  char number[] = "2.500";
  MR_string_number_de_zero(number);
  uint8_t bits[2] = {0};
  const int32_t list[] = {1, 9, 0};
  MR_bitfield_set_multiple(bits, list);
  return strcmp(rgba, "abgr") == 0 && strcmp(number, "2.5") == 0 && bits[1] == 1;
}

typedef struct Knot {
  MR_LinkNode link;
  double parameter;
} Knot;

static int32_t compareKnots(const void* a, const void* b) {
  const Knot *const left = a, *const right = b;
  return (left->parameter > right->parameter) - (left->parameter < right->parameter);
}

static int lists(void) {
  Knot knots[] = {{{NULL, NULL}, 0.5}, {{NULL, NULL}, 0.0}};
  MR_LinkList list = {NULL};
  for (int i = 0; i < 2; ++i) MR_ll_insert_sorted(&list, &knots[i].link, compareKnots);
  MR_List data = {NULL};
  MR_list_append(&data, &knots[1]);
  const int right = list.head == data.head->data;
  MR_list_delete_all(&data);
  return right && !data.head;
}

static int reports(void) {
  AA_set_print_out(AA_TO_OUTPUT, NULL);
  Mr_err_ignore = MR_ITEM_NOT_FOUND;
  return AA_debug_print("%d curves\n", 3) == 9 && rptCheckAbort() == 0 &&
         Mr_print_conditional(MR_NO_ERROR, __FILE__, __LINE__, "not shown") == 1 &&
         MR_warning_buttons(0, NULL, MR_WARNING_MESSAGE, "not shown", MR_WARNING_END) == -1;
}

static int items(void) {
  StatusCode status = MR_NO_ERROR;
  int data = 0;
  DS_Structure* list = DS_create_type(DS_SLIST, &status, __LINE__, __FILE__);
  const int added = AN_add_to_item_list(7, &data, list, &status);
  const int counted = list->methods->enumerate(list, &status) == 1;
  const int removed = AN_remove_from_item_list(&data, list, &status);
  DS_destructor(&list, NULL, NULL, &status);
  MR_LinkList nodes = {NULL};
  const size_t before = MA_outstanding().blocks;
  const int linked = An_addUnique_to_item_list(7, &data, 0.5, &nodes);
  MA_free(nodes.head);
  return added && counted && removed && linked && MA_outstanding().blocks == before;
}

static int pools(void) {
  MR_Pool* pool = MR_pool_new(64);
  const char* const first = MR_pool_alloc(pool, 40);
  const int right = first && MR_pool_alloc(pool, 24) == first + 40;
  MR_pool_free(&pool);
  return right && !pool;
}

static int registries(void) {
  StatusCode status = MR_NO_ERROR;
  int tool = 0;
  DS_Structure* tools = NULL;
  MR_register_item(7, &tool, &tools, &status);
  const int right = MR_get_id_registration(7, tools, &status) == &tool;
  MR_clear_registrations(tools, &status);
  DS_destructor(&tools, NULL, NULL, &status);
  return right && status == MR_NO_ERROR;
}

static int tolerances(void) {
  set_cos_gap(0.002);
  return get_cos_gap() == 0.002 && MR_zIsUp() && MR_get_up_vector()[2] == 1.0;
}

typedef struct Entry {
  MR_AvlNode node;
  int key;
} Entry;

static int compareEntries(const void* a, const void* b) {
  return ((const Entry*)a)->key - ((const Entry*)b)->key;
}

static int trees(void) {
  Entry entries[3] = {{.key = 2}, {.key = 3}, {.key = 1}};
  MR_AvlNode* root = NULL;
  for (int i = 0; i < 3; ++i) MR_avl_insert(&root, &entries[i].node, compareEntries);
  return MR_avl_first(root) == &entries[2].node &&
         MR_avl_find(root, &entries[1], compareEntries) == &entries[1].node;
}

static const struct {
  const char* name;
  int (*works)(void);
} families[] = {{"arrays", arrays},   {"bytes", bytes}, {"items", items},
                {"lists", lists},     {"pools", pools}, {"registries", registries},
                {"reports", reports}, {"trees", trees}, {"tolerances", tolerances}};

int main(void) {
  int status = EXIT_SUCCESS;
  for (size_t i = 0; i < sizeof families / sizeof families[0]; ++i) {
    if (families[i].works()) continue;
    fprintf(stderr, "%s do not work from C\n", families[i].name);
    status = EXIT_FAILURE;
  }
  return status;
}
