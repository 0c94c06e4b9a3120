// Where the tests look for files of others.
#include "tests/support/samples.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "folder.h"

namespace zmfb::host {
namespace {

class Samples : public host_test::FolderTest {
  protected:
    Samples() {
        for (const char* folder : {"first", "second"}) std::filesystem::create_directory(path(folder));
        for (const char* file : {"first/both.dbf", "second/both.dbf", "second/one.dbf"})
            std::ofstream(path(file));
    }
    ~Samples() override {
        if (named_before_ == nullptr)
            unsetenv("ZMFB_SAMPLES");
        else
            setenv("ZMFB_SAMPLES", before_.c_str(), 1);
    }

  private:
    const char* named_before_ = std::getenv("ZMFB_SAMPLES");
    std::string before_ = named_before_ != nullptr ? named_before_ : "";
};

TEST_F(Samples, ComeFromTheFirstFolderThatHasThem) {
    setenv("ZMFB_SAMPLES", (path("first") + ":" + path("second")).c_str(), 1);
    EXPECT_EQ(test::sample("both.dbf"), path("first/both.dbf"));
    EXPECT_EQ(test::sample("one.dbf"), path("second/one.dbf"));
    EXPECT_EQ(test::sample("none.dbf"), "");
    EXPECT_EQ(test::without_sample("none.dbf"), "no none.dbf in the folders of ZMFB_SAMPLES");
}

TEST_F(Samples, AreNowhereUntilTheEnvironmentNamesAFolder) {
    for (const bool empty : {false, true}) {
        empty ? setenv("ZMFB_SAMPLES", "", 1) : unsetenv("ZMFB_SAMPLES");
        EXPECT_EQ(test::sample("both.dbf"), "");
        EXPECT_EQ(test::without_sample("both.dbf"), "ZMFB_SAMPLES names no folder of sample files");
    }
}

TEST_F(Samples, OfAFolderThatIsNotThereAreAMistake) {
    setenv("ZMFB_SAMPLES", (path("first") + ":" + path("third")).c_str(), 1);
    EXPECT_THROW(test::sample("both.dbf"), std::runtime_error);
}

}  // namespace
}  // namespace zmfb::host
