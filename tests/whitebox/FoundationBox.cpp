#include "tests/whitebox/FoundationBox.h"

namespace {
const FoundationBox kBox = {};
}

const FoundationBox* GetFoundationBox() { return &kBox; }
