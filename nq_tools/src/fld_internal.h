// What the field list's sources share and do not export: building and linking nodes.
#pragma once

#include <cstdint>

#include "nq_fldlist.h"

namespace nqfld {

// A node with the name duplicated and upper-cased, the type set, aux1 1, aux2 0 and a zero
// value; null when the node cannot be allocated.
FldNode *new_node(const nq_wchar *name, uint16_t type);

// Appends a node made by new_node: 1, or -4 when there is no node or it cannot be linked.
// A node that cannot be linked is released, but a List or StrList in it stays the caller's.
int append_node(FldList *list, FldNode *node);

// The destructor the linked list calls for each datum.
int destroy_datum(void *datum);

// The truncation of a C cast, as the processor does it: NaN and values out of the int range
// give the "integer indefinite" value INT32_MIN instead of undefined behaviour.
int32_t truncate_to_int(double value);

}  // namespace nqfld
