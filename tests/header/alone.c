/* Nothing but the header: for a compiler without Windows headers, in C and in C++, with and without
 * prototypes. */
#include "ostrel/ostrel.h"
#include "tests/header/exports.h"

#define CHECK_NUMBER(name, value) typedef char check_##name[(name) == (value) ? 1 : -1];
FOR_EVERY_NUMBER(CHECK_NUMBER)

#define DECLARE(name) extern name##Proc bound_##name;
FOR_EVERY_EXPORT(DECLARE)
