#include "session/shared_files.h"

#include <filesystem>

#include "tests/support/temporary_folder.h"
#include "tests/support/vocabulary.h"

namespace QV::session {
namespace {

TEST(SharedFiles, areFoundByNameFromAnyFolderUnlessAPathIsGiven) {
  const test::TemporaryFolder folder;
  const auto before = std::filesystem::current_path();
  folder.write("mine", "");
  std::filesystem::current_path(folder.string());
  EXPECT_TRUE(std::filesystem::exists(findRobot("porter")));
  EXPECT_TRUE(std::filesystem::exists(findMap("apartment")));
  EXPECT_EQ(findRobot("mine"), "mine");
  EXPECT_EQ(findRobot("porter.urdf"), "porter.urdf");
  EXPECT_EQ(findMap("maps/apartment"), "maps/apartment");
  EXPECT_EQ(errorOf([] { findRobot("portr"); }),
            "a path, or one of porter expected, \"portr\" given");
  std::filesystem::current_path(before);
}

}  // namespace
}  // namespace QV::session
