#include "registry/EdrDescriptionFile.h"

#include "StartFailureText.h"
#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>

namespace {

TEST(EdrDescriptionFile, DescribesFieldsAndNestedBlocks) {
    support::TemporaryDirectory const directory;
    auto const description = host::readEdrDescription(directory.write(
        "d.yaml",
        "DETAIL:\n  A: text\n  B:\n    C: long\n    D:\n      E: datetime\n  F: {}\n  G: text\n"));
    struct {
        char const* path;
        EDR::FieldType type;
    } const fields[] = {
        {"DETAIL.A", EDR::FieldType::text},
        {"DETAIL.B.C", EDR::FieldType::number},
        {"DETAIL.B.D.E", EDR::FieldType::dateTime},
        {"DETAIL.G", EDR::FieldType::text},
    };
    for (auto const& [path, type] : fields) {
        auto const field = description.findField(path);
        ASSERT_TRUE(field.isValid()) << path;
        auto const& kind = description.blockKinds()[field.blockKind()];
        EXPECT_EQ(kind.fields[field.field()].type, type) << path;
    }
    EXPECT_TRUE(description.findBlock("DETAIL.B.D").isValid());
    EXPECT_TRUE(description.findBlock("DETAIL.F").isValid());
}

TEST(EdrDescriptionFile, IsRejectedWithEveryProblemAndItsPlace) {
    struct {
        char const* text;
        std::vector<std::string> problems;
    } const cases[] = {
        {"HEADER: {A: text}\n", {"1:1: an EDR description must be one mapping named 'DETAIL'"}},
        {"DETAIL: text\n", {"1:1: an EDR description must be one mapping named 'DETAIL'"}},
        {"DETAIL:\n  A: string\n  B:\n  C: [text]\n  A: long\n",
         {"2:6: the field 'A' has the unknown type 'string': expected 'text', 'long' or 'datetime'",
          "3:3: the field 'B' has the unknown type '': expected 'text', 'long' or 'datetime'",
          "4:3: 'C' must be a field's type or, for a block, a mapping, not a sequence",
          "5:3: the key 'A' is given twice, first on line 2"}},
        {"DETAIL:\n  RECORD: text\n  A.B: text\n  A: {B: text}\n",
         {"2:3: 'RECORD' names the kind of a record and can't be a field",
          "3:3: 'A.B' can't be a name: expected a text without dots"}},
    };
    support::TemporaryDirectory const directory;
    for (auto const& each : cases) {
        auto const file = directory.write("d.yaml", each.text);
        EXPECT_EQ(problemsOf([&] { host::readEdrDescription(file); }), each.problems) << each.text;
    }
    auto const missing = (directory.path() / "missing.yaml").string();
    EXPECT_EQ(problemsOf([&] { host::readEdrDescription(missing); }),
              std::vector<std::string>{"ERR_FILE_NOT_READABLE: '" + missing +
                                       "' can't be read: No such file or directory"});
}

} // namespace
