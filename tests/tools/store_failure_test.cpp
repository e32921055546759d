// Caches in the Linux store: one that cannot be used, and a printer's.
#include <cstdlib>

#include "tests/support/test_store.h"
#include "tests/tools/tool_test.h"

namespace Corvane::Test {
namespace {

class StoreTest : public ToolTest {
 protected:
  const TestStore m_store;
  const std::string m_get =
      "get --device recorded:@data@/typical --spec @data@/typical.xml State Model --cache ";
};

TEST_F(StoreTest, ADamagedOneIsSaidAndCostsNoAnswer) {
  std::filesystem::create_directory(m_store.File().parent_path());
  const std::string text(100, '.');
  const std::string cutShort = std::string("SQLite format 3\0", 16) + std::string(40, '\x01');
  for (const std::string& content : {text, cutShort}) {
    std::ofstream(m_store.File(), std::ios::binary | std::ios::trunc) << content;
    for (const std::string cache : {"registry:Corvane", "printer:Lobby"}) {
      Expect(m_get + cache, "State\tidle\nModel\tQ 420\n",
             "corvane: " + cache + ": the cache cannot be read; values come from the device: *\n");
      for (const std::string command : {"show", "clear"}) {
        Expect("cache " + command + " --cache " + cache, "",
               "corvane: " + cache + ": cannot be read: its file *\n", 5);
      }
    }
  }
}

TEST_F(StoreTest, OneThatCannotBeMadeIsEmptyAndSaid) {
  setenv("CORVANE_STORE", "/proc/corvane/store.db", 1);
  Expect(m_get + "registry:A", "State\tidle\nModel\tQ 420\n",
         "corvane: registry:A: the cache cannot be written; what is read now is not kept: *\n");
  Expect("cache show --cache registry:A", "The cache is empty.\n");
}

TEST_F(StoreTest, APrintersCacheKeepsShowsAndClears) {
  Expect(m_get + "printer:Lobby", "State\tidle\nModel\tQ 420\n");
  Serve("80/zq/device/product_information.xml",
        "<P><ProductSerialNumber>1</ProductSerialNumber></P>");
  const std::string elsewhere =
      "get --device @device@ --spec @data@/typical.xml State Model --cache printer:Lobby";
  Expect(elsewhere, "State\tidle\nModel\tQ 420\n");
  Expect("cache show --spec @data@/typical.xml --cache printer:Lobby",
         "the printer's values:\n  Maker\tQuillmere\tnever goes stale\n  Model\tQ 420\tnever goes "
         "stale\n  State\tidle\t* old\tfresh\n  site:Series\tA & B\tnever goes stale\n");
  Expect("cache clear --cache printer:Lobby", "Removed 8 values and 0 keys.\n");
  Expect(elsewhere, "", "corvane: State: no value *\ncorvane: Model: no value *\n", 1);
}

}  // namespace
}  // namespace Corvane::Test
