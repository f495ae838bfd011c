#include "tests/whitebox/CoreBox.h"

namespace {
const CoreBox kBox = {};
}

const CoreBox* GetCoreBox() { return &kBox; }
