#include "tests/support/wine.h"

namespace Corvane::Test {

const char* WineDefect(const char*) { return nullptr; }

const char* LayerOnly(const char*) { return nullptr; }

}  // namespace Corvane::Test
