// The main of tests whose printers have the ports that the system itself chooses.
#include <gtest/gtest.h>

#include "tests/support/peers/private_network.h"

int main(int argc, char** argv) {
  Corvane::Test::EnterPrivateNetwork(argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
