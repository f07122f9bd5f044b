#include <cstring>

#include <kilnbase/kilnbase.h>

extern "C" void reportFromC(const char* text);

int main() {
  const RWMATXInit matrixMessages;
  const MathCatalogEntry* entry = vxKilnBase::findMathMessage(0x4018);
  if (entry == nullptr || std::strstr(entry->message, "leading submatrix") == nullptr) return 1;
  reportFromC("both languages reach the installed libraries");
}
