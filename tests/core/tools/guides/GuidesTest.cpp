#include "core/catalogue/Catalogue.h"
#include "core/tools/guides/MervoGuides.h"
#include "tests/support/Files.h"
#include "tests/support/Program.h"

#include <gmock/gmock.h>

namespace mervo {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST(Guides, areReadAfreshAndNeverFail)
{
    test::TempDir dir;
    const auto file = dir / "llm-guide.md";
    EXPECT_EQ(MervoGuides::text(file, "built in"), "built in");
    test::writeFile(file, "one\n");
    EXPECT_EQ(MervoGuides::text(file, "built in"), "one\n");
    test::writeFile(file, "two");
    EXPECT_EQ(MervoGuides::text(file, "built in"), "two");
    test::writeFile(file, "caf\xE9");
    EXPECT_EQ(MervoGuides::text(file, "built in"), "built in") << "not UTF-8";
    std::filesystem::remove(file);
    std::filesystem::create_directory(file);
    EXPECT_EQ(MervoGuides::text(file, "built in"), "built in");
}

TEST(Guides, lieInTheBundle)
{
    const auto folder = test::bundle() / "Resources" / "MervoCore_MervoCore.bundle";
    EXPECT_EQ(MervoGuides::llm(), test::readFile(folder / "llm-guide.md"));
    EXPECT_EQ(MervoGuides::user(), test::readFile(folder / "user-guide.md"));
    EXPECT_EQ(Tools::find("how_it_works")->nativeRun({{"any", "thing"}}), MervoGuides::llm());
}

// What the summary of how_it_works promises, and no tool that the catalogue does not have.
TEST(Guides, coverWhatIsPromised)
{
    const std::string guide = MervoGuides::llm();
    for (const auto* topic :
        {"autonomy slider", "rules", "destructive", "queue", "catalogue by domain", "mervo auto-done", "$RONDEL_DONE"})
        EXPECT_THAT(guide, HasSubstr(topic));
    for (const Tool* tool : Tools::all())
        EXPECT_THAT(guide, HasSubstr("`" + tool->id + "`")) << "the guide forgets a tool";
}

TEST(Guides, giveWayToTheBuiltInTexts)
{
    // A bundle without resources: the test program itself, linked into an empty one, asked for one test only.
    if (std::getenv("MERVO_TEST_EMPTY_BUNDLE") != nullptr) {
        EXPECT_THAT(MervoGuides::llm(), StartsWith("Mervo: you propose, the human approves."));
        EXPECT_THAT(MervoGuides::user(), StartsWith("Mervo is an auditable agent for your Mac."));
        EXPECT_EQ(Tools::find("how_it_works")->nativeRun({}), MervoGuides::kBuiltInLlm);
        return;
    }
    test::TempDir dir;
    const auto program = dir / "Contents" / "Tests" / "guides";
    std::filesystem::create_directories(program.parent_path());
    std::filesystem::copy_file("/proc/self/exe", program);
    const auto run = test::runProgram(
        program, {"--gtest_filter=Guides.giveWayToTheBuiltInTexts"}, {{"MERVO_TEST_EMPTY_BUNDLE", "1"}});
    EXPECT_EQ(run.status, 0) << run.out;
    EXPECT_THAT(run.out, HasSubstr("1 test"));
}

} // namespace
} // namespace mervo
