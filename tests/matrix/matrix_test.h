/// The fixture of the tests that need no real database.
#pragma once

#include <string>
#include <vector>

#include "tests/matrix/fake_database.h"
#include "tests/matrix/values.h"
#include "tests/support/runtime.h"

namespace zmfb::test {

class MatrixTest : public Runtime {
  protected:
    FakeDatabase db;
};

}  // namespace zmfb::test
