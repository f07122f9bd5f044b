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
  const short* const third = MR_array_get(array, 3);
  const int right = array->count == 5 && *third == element;
  MR_array_free(&array);
  return right && !array;
}

static int bitSets(void) {
  uint8_t bytes[2] = {0};
  const int32_t list[] = {1, 9, 0};
  MR_bitfield_set_multiple(bytes, list);
  return MR_bitfield_is_set(bytes, 9) == 1 && MR_bitfield_is_clear(bytes + 1, 1) == 0;
}

typedef struct Knot {
  MR_LinkNode link;
  double parameter;
} Knot;

static int32_t compareKnots(const void* a, const void* b) {
  const Knot* const left = a;
  const Knot* const right = b;
  return (left->parameter > right->parameter) - (left->parameter < right->parameter);
}

static int linkLists(void) {
  Knot knots[] = {{{NULL, NULL}, 0.5}, {{NULL, NULL}, 0.0}};
  MR_LinkList list = {NULL};
  MR_ll_insert_sorted(&list, &knots[0].link, compareKnots);
  MR_ll_insert_sorted(&list, &knots[1].link, compareKnots);
  return list.head == &knots[1].link && MR_ll_length(list.head) == 2;
}

static int dataLists(void) {
  char data[] = "ab";
  MR_List list = {NULL};
  MR_list_append(&list, &data[1]);
  MR_list_prepend(&list, &data[0]);
  const int right = list.head->data == &data[0] && list.head->next->data == &data[1];
  MR_list_delete_all(&list);
  return right && !list.head;
}

static int debugChannel(void) {
  AA_set_print_out(AA_TO_OUTPUT, NULL);
  return AA_get_print_out(NULL) == AA_TO_OUTPUT && AA_debug_print("%d curves\n", 3) == 9;
}

static int items(void) {
  StatusCode status = MR_NO_ERROR;
  int data = 0;
  DS_Structure* list = DS_create_type(DS_SLIST, &status, __LINE__, __FILE__);
  const int added = AN_add_to_item_list(7, &data, list, &status);
  const int removed = AN_remove_from_item_list(&data, list, &status);
  DS_destructor(&list, NULL, NULL, &status);
  MR_LinkList nodes = {NULL};
  const int linked = An_addUnique_to_item_list(7, &data, 0.5, &nodes);
  MA_free(nodes.head);
  return added && removed && linked && status == MR_NO_ERROR;
}

static int memory(void) {
  const size_t before = MA_outstanding().blocks;
  int* const number = MA_malloc(sizeof *number, __LINE__, __FILE__);
  MA_free(number);
  return number && MA_outstanding().blocks == before;
}

static int pixels(void) {
  char rgba[] = "rgba";
  MR_SwapColourChannels(1, 1, 5121, rgba, NULL);
  return strcmp(rgba, "abgr") == 0;
}

static int pools(void) {
  MR_Pool* pool = MR_pool_new(64);
  const char* const first = MR_pool_alloc(pool, 40);
  const char* const second = MR_pool_alloc(pool, 24);
  const int right = first && second == first + 40;
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

static int reports(void) {
  return rptCheckAbort() == 0;
}

static int statusCodes(void) {
  Mr_err_ignore = MR_ITEM_NOT_FOUND;
  return Mr_print_conditional(MR_NO_ERROR, __FILE__, __LINE__, "not shown") == 1;
}

static int strings(void) {
  char number[] = "2.500";
  MR_string_number_de_zero(number);
  return strcmp(number, "2.5") == 0;
}

static int structures(void) {
  StatusCode status = MR_NO_ERROR;
  char names[] = "ab";
  DS_Structure* list = DS_create_type(DS_ARRAY, &status, __LINE__, __FILE__);
  DS_set_comparator(list, Ds_filo_comparator, &status);
  list->methods->add(list, &names[0], &status);
  list->methods->add(list, &names[1], &status);
  void* const head = list->methods->head(list, &status);
  const int right = list->methods->get_data(head, &status) == &names[1];
  DS_destructor(&list, NULL, NULL, &status);
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
  const Entry* const left = a;
  const Entry* const right = b;
  return left->key - right->key;
}

static int trees(void) {
  Entry entries[3] = {{.key = 2}, {.key = 3}, {.key = 1}};
  MR_AvlNode* root = NULL;
  for (int i = 0; i < 3; ++i) MR_avl_insert(&root, &entries[i].node, compareEntries);
  return MR_avl_first(root) == &entries[2].node &&
         MR_avl_find(root, &entries[1], compareEntries) == &entries[1].node;
}

static int warnings(void) {
  return MR_warning_buttons(0, NULL, MR_WARNING_MESSAGE, "not shown", MR_WARNING_END) == -1;
}

static const struct {
  const char* name;
  int (*works)(void);
} families[] = {{"arrays", arrays},         {"bit sets", bitSets},
                {"data lists", dataLists},  {"debug channel", debugChannel},
                {"items", items},           {"link lists", linkLists},
                {"memory", memory},         {"pixels", pixels},
                {"pools", pools},           {"registries", registries},
                {"reports", reports},       {"status codes", statusCodes},
                {"strings", strings},       {"structures", structures},
                {"tolerances", tolerances}, {"trees", trees},
                {"warnings", warnings}};

int main(void) {
  int status = EXIT_SUCCESS;
  for (size_t i = 0; i < sizeof families / sizeof families[0]; ++i) {
    if (families[i].works()) continue;
    fprintf(stderr, "%s do not work from C\n", families[i].name);
    status = EXIT_FAILURE;
  }
  return status;
}
