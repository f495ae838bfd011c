// What MinGW's thread library forgets at an unload.
//
// Linked into a DLL, winpthreads takes one thread-local slot of the process the first time that
// anything in the DLL needs it, and keeps it when the DLL goes. A process has 1088 of them: one
// that loads and unloads the library as often would end in abort(). So the slot is made to be taken
// here, where its number can be seen, and is given back behind the last destructor.
#if defined(__MINGW32__)

#include <pthread.h>

#include <cstdlib>

#include "Common/Win.h"

namespace {

DWORD g_slot = TLS_OUT_OF_INDEXES;

void GiveSlotBack() { TlsFree(g_slot); }

// Before every other constructor, so that its end comes behind every other destructor.
__attribute__((constructor(101))) void TakeSlot() {
  const DWORD next = TlsAlloc();
  if (next == TLS_OUT_OF_INDEXES) return;
  TlsFree(next);
  pthread_self();
  // Another thread may have been quicker. What this thread finds in a slot that it has just seen
  // empty, though, can only be what the call above has left there.
  if (TlsGetValue(next) == nullptr) return;
  g_slot = next;
  std::atexit(GiveSlotBack);
}

}  // namespace

#endif
