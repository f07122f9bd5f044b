#include <kilnbase/util/DS/detail/LinkedList.h>

DS_DEFINE_KIND(dlist, vxKilnBase::detail::DoublyLinked, nullptr)
DS_DEFINE_KIND(slist, vxKilnBase::detail::SinglyLinked, nullptr)
