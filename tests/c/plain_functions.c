/* Each family of plain functions, used once from C. */
#include <stdlib.h>
#include <string.h>

#include <kilnbase/anim/an_anim_list.h>
#include <kilnbase/memory/ma_memory_manager.h>
#include <kilnbase/services/FontProperties.h>
#include <kilnbase/services/MorlaBehaviour.h>
#include <kilnbase/services/MorlaQA.h>
#include <kilnbase/services/cursor_procedure.h>
#include <kilnbase/services/hosted_variables.h>
#include <kilnbase/services/mr_undo.h>
#include <kilnbase/services/redraw.h>
#include <kilnbase/services/rtb_init.h>
#include <kilnbase/util/DS/ds_structures.h>
#include <kilnbase/util/DS/mr_register.h>
#include <kilnbase/util/aa_debug.h>
#include <kilnbase/util/db_filename.h>
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

static int bytes(void) {
  char rgba[] = "rgba", number[] = "2.500";
  MR_SwapColourChannels(1, 1, 5121, rgba, NULL);
  MR_string_number_de_zero(number);
  uint8_t bits[2] = {0};
  MR_bitfield_set(bits, 9);
  return strcmp(rgba, "abgr") == 0 && strcmp(number, "2.5") == 0 && bits[1] == 1;
}

static int compareAddresses(const void* a, const void* b) {
  return (a > b) - (a < b);
}

static int listsAndTrees(void) {
  MR_LinkNode link = {NULL, NULL};
  MR_LinkList links = {NULL};
  MR_ll_insert_sorted(&links, &link, compareAddresses);
  MR_List data = {NULL};
  MR_list_append(&data, &link);
  const int right = links.head == data.head->data;
  MR_list_delete_all(&data);
  MR_AvlNode leaf, *root = NULL;
  MR_avl_insert(&root, &leaf, compareAddresses);
  return right && root == &leaf;
}

static int mappedBlocks(void) {
  void* block = Ma_allocMmapMemory(1000, 0, 1);
  const uint32_t left = Ma_shrinkMmapMemory(block, 10);
  Ma_freeMmapMemory(block);
  return left == 1000 && Ma_get_mmap_overhead() == 24;
}

static int reports(void) {
  AA_set_print_out(AA_TO_OUTPUT, NULL);
  Mr_err_ignore = MR_ITEM_NOT_FOUND;
  return AA_debug_print("%d curves\n", 3) == 9 && rptCheckAbort() == 0 &&
         Mr_print_conditional(MR_NO_ERROR, __FILE__, __LINE__, "not shown") == 1 &&
         MR_warning_buttons(0, NULL, MR_WARNING_MESSAGE, "not shown", MR_WARNING_END) == -1;
}

static int files(void) {
  char path[264], name[] = "\\wing", here[8] = ".";
  Db_set_project_path("D:\\work\\");
  Db_set_project_name("demo");
  Db_make_dirname(path, Db_default_path(SOUND_DATA)->path);
  const int right = strcmp(path, "D:\\work\\demo\\wire\\") == 0;
  expand_filename(path, name, WIRE_DATA);
  Win32_Directory* folder = win32_opendir(here);
  const Win32_DirectoryEntry* entry = win32_readdir(folder);
  const int isRead = entry != NULL && entry->number == 1 && entry->length == strlen(entry->name);
  win32_closedir(folder);
  return right && isRead && strcmp(path, name) == 0 && SB_FileExists(here) == SB_DIRECTORY;
}

static int items(void) {
  int data = 0;
  DS_Structure *list = DS_create_type(DS_SLIST, NULL, __LINE__, __FILE__), *tools = NULL;
  AN_add_to_item_list(7, &data, list, NULL);
  MR_register_item(7, &data, &tools, NULL);
  const int right =
      list->methods->enumerate(list, NULL) == 1 && MR_get_id_registration(7, tools, NULL) == &data;
  AN_remove_from_item_list(&data, list, NULL);
  MR_clear_registrations(tools, NULL);
  DS_destructor(&list, NULL, NULL, NULL);
  DS_destructor(&tools, NULL, NULL, NULL);
  return right && MA_outstanding().blocks == 0;
}

static int choices(void) {
  MorlaQAAssert(1, true);
  FontProperties *font = FontProperties_alloc(), *copy = FontProperties_alloc();
  FontProperties_setFontSize(font, 12);
  FontProperties_assign(copy, font);
  char* icon = MorlaBehaviour_getProductIconName();
  const int right =
      FontProperties_getFontSize(copy) == 12 && strcmp(icon, "Morla") == 0 && !checkMorlaHeap();
  FontProperties_free(font);
  FontProperties_free(copy);
  free(icon);
  return right && MorlaBehaviour_saveOnExit();
}

/* The library must export what it lets programs compile, too: volatile pointers to it must be
 * linked. */
static void (*const volatile exported[])(void) = {
    (void (*)(void))MR_ll_insert_sorted, (void (*)(void))MR_ll_insert_sorted2,
    (void (*)(void))MR_ll_merge_sorted, (void (*)(void))MR_pool_alloc};

static int inlineFunctions(void) {
  int count = 0;
  for (size_t i = 0; i < sizeof exported / sizeof *exported; ++i) count += exported[i] != NULL;
  return count == 4;
}

static int arraysAndPools(void) {
  const short element = 5;
  MR_Array* array = MR_array_new(sizeof element, 0, 2);
  MR_array_put(array, 3, &element);
  MR_Pool* pool = MR_pool_new(64);
  const int right = *(const short*)MR_array_get(array, 3) == element && MR_pool_alloc(pool, 40);
  MR_array_free(&array);
  MR_pool_free(&pool);
  return right;
}

static intptr_t last;

static void follow(intptr_t argument) {
  last += argument;
}

static intptr_t sum(intptr_t a, intptr_t b, intptr_t c, intptr_t d) {
  return a + b + c + d;
}

static int services(void) {
  add_cursor_procedure(follow);
  get_cursor_procedure()(3);
  rtbInit_getName(sum);
  redraw_add_model_planes();
  angular_mode = 1;
  persp_grid_extent = 0.5;
  MR_undo_push_new_group("no manager", false);
  MR_UndoGroup* group = MR_undo_get_group();
  MR_undo_pop_group(true);
  return !group && last == 3 && RI_getName(1, 2, 3, 4) == 10 &&
         redraw_get_pending_planes() == 0x9F8 && angular_mode + persp_grid_extent == 1.5;
}

static int tolerances(void) {
  set_cos_gap(0.002);
  return get_cos_gap() == 0.002 && MR_zIsUp() && MR_get_up_vector()[2] == 1.0;
}

/* Returns the number of the first group that does not work. */
int main(void) {
  int (*const groups[])(void) = {arraysAndPools, inlineFunctions, bytes,         choices,
                                 files,          items,           listsAndTrees, mappedBlocks,
                                 reports,        services,        tolerances};
  for (int i = 0; i < 10; ++i) {
    if (!groups[i]()) return i + 1;
  }
  return EXIT_SUCCESS;
}
