#include "tests/whitebox/SessionBox.h"

namespace {
const SessionBox kBox = {};
}

const SessionBox* GetSessionBox() { return &kBox; }
