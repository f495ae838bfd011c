/* A C host that links with the import library: the header is sound C99 on its own, its numbers are
 * the documented ones, each prototype fits the pointer type of its name, and what needs no
 * initialisation answers. */
#include "ostrel/ostrel.h"

#include <stdio.h>

#include "tests/header/exports.h"

#define CHECK_NUMBER(name, value) typedef char check_##name[(name) == (value) ? 1 : -1];
FOR_EVERY_NUMBER(CHECK_NUMBER)

typedef char check_bool[sizeof(OstrelBool) == 4 ? 1 : -1];
typedef char check_window[sizeof(OstrelWindow) == sizeof(void*) ? 1 : -1];

struct Bound {
#define MEMBER(name) name##Proc name##_;
  FOR_EVERY_EXPORT(MEMBER)
#undef MEMBER
};

int main(void) {
  struct Bound bound;
  int failures = 0;
#define BIND(name) bound.name##_ = name;
  FOR_EVERY_EXPORT(BIND)
#undef BIND
  if (bound.Ostrel_PermitToChangeMode_() != 1) ++failures;
  if (bound.Ostrel_DetectDisplayConnectedFeatureIsValid_() != 1) ++failures;
  if (bound.Ostrel_Run_() != 0) ++failures;
  if (bound.Ostrel_RunEx_() != 0) ++failures;
  if (bound.Ostrel_IsExtendModeEnabled_() != 0) ++failures;
  bound.Ostrel_DeInit_();
  bound.Ostrel_DeInitExtendMode_();
  printf("c_host: %d wrong answers\n", failures);
  return failures;
}
