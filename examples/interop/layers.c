/* The C program of docs/guide/c.md: the layers of a drawing, kept by the plain functions. */
#include <math.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

//! [headers]
#include <kilnbase/util/DS/ds_structures.h>
#include <kilnbase/util/db_filename.h>
#include <kilnbase/util/mr_array.h>
#include <kilnbase/util/mr_linklist.h>
#include <kilnbase/util/mr_status.h>
#include <kilnbase/util/mr_tolerance.h>
#include <vx/Report.h>
//! [headers]

static void expect(int holds, const char* what) {
  if (holds) return;
  fputs("not so: ", stderr);
  fputs(what, stderr);
  exit(1);
}

//! [report]
static int lines;

static void countLines(const char* text) { /* a piece of a line, or several */
  for (const char* c = text; *c; ++c) lines += *c == '\n';
}

static void reports(void) {
  RptSinks sinks = {0};
  sinks.error = countLines; /* the others stay as they are by default */
  const RptSinks before = rptSetSinks(&sinks);
  Mr_print_error(MR_ITEM_NOT_FOUND, "layers.c", 7, "no such layer\n");
  rptSetSinks(&before);
  expect(lines == 1, "the report came here");
}
//! [report]

//! [structure]
static int addLength(void* name, void* total, StatusCode* status) {
  if (!name) *status = MR_INVALID_DATA;
  if (!name) return 0; /* a failure */
  *(size_t*)total += strlen(name);
  return 1;
}

static void names(void) {
  char water[] = "water", ground[] = "ground";
  StatusCode status = MR_NO_ERROR;
  DS_Structure* layers = DS_create_type(DS_DLIST, &status, __LINE__, __FILE__);
  DS_set_comparator(layers, Ds_string_comparator, &status);
  layers->methods->add(layers, water, &status); /* borrows the text */
  layers->methods->add(layers, ground, &status);
  expect(status == MR_NO_ERROR, "both were added");

  DS_Position first = layers->methods->head(layers, &status);
  expect(layers->methods->get_data(first, &status) == ground, "ground comes first");
  size_t total = 0;
  layers->methods->walk(layers, addLength, &total, -1, 0, &status);
  expect(total == strlen("water") + strlen("ground"), "the walk saw both");

  layers->methods->remove(layers, ground, NULL, NULL, &status);
  layers->methods->remove(layers, ground, NULL, NULL, &status);
  expect(status == MR_ITEM_NOT_FOUND, "the second removal failed");
  DS_destructor(&layers, NULL, NULL, &status); /* NULL: the items stay */
  expect(layers == NULL, "the handle was cleared");
}
//! [structure]

//! [records]
typedef struct Layer {
  MR_LinkNode link; /* the first field */
  double height;
} Layer;

static int32_t compareHeights(const void* a, const void* b) {
  const double left = ((const Layer*)a)->height, right = ((const Layer*)b)->height;
  return (left > right) - (left < right);
}

static void records(void) {
  Layer roof = {{NULL, NULL}, 9.5}, floor = {{NULL, NULL}, 0.0};
  MR_LinkList layers = {NULL};
  MR_ll_insert_sorted(&layers, &roof.link, compareHeights); /* allocates nothing */
  MR_ll_insert_sorted(&layers, &floor.link, compareHeights);
  expect((Layer*)layers.head == &floor, "the floor is the lowest");
}
//! [records]

//! [array]
static void heights(void) {
  MR_Array* heights = MR_array_new(sizeof(double), 0, 16);
  for (int i = 0; i < 100; ++i) {
    const double height = 0.5 * i;
    MR_array_put(heights, i, &height); /* copies the double */
  }
  const double* all = (const double*)MR_array_get(heights, 0); /* until the array grows */
  expect(all[99] == 49.5, "the last height is there");
  MR_array_free(&heights);
}
//! [array]

//! [ownership]
static void texts(void) {
  char* path = convertFilename("layers\\ground.txt", 1); /* from malloc, the caller's */
  expect(path != NULL && strcmp(path, "layers/ground.txt") == 0, "the slashes were turned");
  free(path);

  set_crv_fit_tolerance(0.002);
  expect(fabs(get_crv_intersect_tolerance() - 0.004) < 1e-15, "the setting holds");
}
//! [ownership]

int main(void) {
  reports();
  names();
  records();
  heights();
  texts();
  return 0;
}
