#include <gtest/gtest.h>

#include <kilnbase/util/DS/mr_register.h>

#include "tests/util/DS/Structures.h"

using namespace kilntest;

TEST(Register, IdsAreUniqueAndValuesAreFoundByThem) {
  DS_Structure* registry = nullptr;
  StatusCode status = MR_NO_ERROR;
  EXPECT_EQ(0, MR_register_item(1, item(1), nullptr, &status));
  EXPECT_EQ(MR_ARGUMENT_ERROR, status);
  EXPECT_EQ(0, MR_register_item(-1, item(1), &registry, &status));
  EXPECT_EQ(MR_INVALID_FUNCTION, status);
  status = MR_NO_ERROR;
  EXPECT_EQ(1, MR_register_item(7, item(17), &registry, nullptr));
  EXPECT_EQ(1, MR_register_item(0, nullptr, &registry, &status));
  EXPECT_EQ(0, MR_register_item(0, item(18), &registry, nullptr)) << "null is a value";
  EXPECT_EQ(item(17), MR_get_id_registration(7, registry, &status));
  EXPECT_EQ(7, MR_get_items_registration_id(item(17), registry, &status));
  EXPECT_EQ(0, MR_get_items_registration_id(nullptr, registry, &status));
  EXPECT_EQ(MR_NO_ERROR, status);
  EXPECT_EQ(nullptr, MR_get_id_registration(9, registry, &status));
  EXPECT_EQ(MR_ITEM_NOT_FOUND, status);
  EXPECT_EQ(1, MR_clear_registrations(registry, nullptr));
  Destroy()(registry);
}

TEST(Register, DeregistrationGoesByValueAndTakesTheFirst) {
  DS_Structure* registry = nullptr;
  StatusCode status = MR_NO_ERROR;
  for (const int id : {3, 1, 2}) MR_register_item(id, item(id == 2 ? 20 : 13), &registry, &status);
  const Owned owned(registry);
  EXPECT_EQ(1, MR_deregister_item(item(13), registry, &status));
  EXPECT_EQ(1, MR_get_items_registration_id(item(13), registry, &status));
  EXPECT_EQ(2, registry->methods->enumerate(registry, &status)) << "no null place is left";
  EXPECT_EQ(MR_NO_ERROR, status);
  EXPECT_EQ(0, MR_deregister_item(item(99), registry, &status));
  EXPECT_EQ(1, MR_clear_registrations(registry, &status));
}
