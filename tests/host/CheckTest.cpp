// What "check" finds, and how it tells people and programs.
#include "ServiceFixture.h"

#include <simdjson.h>

namespace {

using testing::HasSubstr;
using testing::Not;

class Check : public ServiceFixture {
protected:
    // Checks a registry with these functions; the exit code. The output is in "out" and "err".
    int check(std::string const& functions, std::vector<std::string> const& options = {}) const {
        directoryM.write("r.yaml", "host:\n  DataPool:\n  Pipelines:\n    P:\n"
                                   "      EdrDescription: edr.yaml\n"
                                   "      Input: {Files: [x.jsonl]}\n      Functions:\n" +
                                       functions);
        directoryM.write("x.jsonl", "");
        directoryM.write("edr.yaml", "DETAIL: {A: text, SERVICE: text}\n");
        std::vector<std::string> arguments = {"check", "r.yaml"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return HostProcess(directoryM.path(), arguments).wait();
    }
    static std::string function(std::string const& name, std::string const& keys) {
        return "        " + name + ": {ModuleName: TestCounter, Module: {" + keys + "}}\n";
    }
};

TEST_F(Check, FindsEveryFieldWithoutWhichAPlugInCantStart) {
    EXPECT_EQ(check(function("F", "Fields: \"DETAIL.A,DETAIL.X,DETAIL.SERVCE,DETAIL.B.Y\", "
                                  "Wished: DETAIL.W") +
                    function("G", "Fields: DETAIL.A, Wished: DETAIL.W") +
                    function("H", "Fail: build, Wished: DETAIL.W") +
                    function("I", "Fields: DETAIL.X, Throw: build")),
              3);
    auto const told = directoryM.read("err");
    for (auto const* const path : {"DETAIL.X'", "DETAIL.SERVCE'", "DETAIL.B.Y'"}) {
        EXPECT_EQ(count(told, std::string("Functions.F.Module ERR_EDR_FIELD_NOT_FOUND The EDR "
                                          "description has no field '") +
                                  path),
                  1U)
            << path << " in\n"
            << told;
    }
    EXPECT_THAT(told, HasSubstr("(alias '', needed by TestCounter ) (did you mean 'SERVICE'?)"));
    EXPECT_EQ(count(told, "Functions.F.Module"), 4U) << told;
    // Only what failed for a field is asked for all that it misses.
    EXPECT_EQ(count(told, "DETAIL.W'"), 1U) << told;
    EXPECT_THAT(told, Not(HasSubstr("Functions.G.Module")));
    EXPECT_THAT(told, HasSubstr("Functions.H.Module ERR_MODULE_NOT_USABLE"));
    EXPECT_THAT(told, HasSubstr("Functions.I.Module ERR_MODULE_ENTRY_FAILED"));
}

TEST_F(Check, AsksWhatWasMeant) {
    struct {
        std::string functions;
        std::string told;
    } const cases[] = {
        {"        F: {ModuleName: TestCuonter}\n",
         "'TestCuonter' wasn't found (did you mean 'TestCounter'?)"},
        {"        F: {ModuleName: TestCuonter, Library: '" HOST_TEST_MODULES "/TestCounter.so'}\n",
         "has no entry 'TestCuonterModuleStart' (did you mean 'TestCounter'?)"},
        {function("F", "Trhow: x"), "registry key 'Trhow' (did you mean 'Throw'?)"},
        {function("F", "Colour: x"), "registry key 'Colour'.\n"},
    };
    for (auto const& each : cases) {
        check(each.functions);
        EXPECT_THAT(directoryM.read("err"), HasSubstr(each.told));
    }
}

TEST_F(Check, TellsProgramsTheSame) {
    EXPECT_EQ(check(function("F", "Fields: DETAIL.X") + function("G", "Colour: \"\""), {"--json"}),
              3);
    simdjson::dom::parser parser;
    simdjson::dom::element found = parser.parse(directoryM.read("out"));
    auto const text = [&](char const* pointer) {
        return std::string(found.at_pointer(pointer).get_string().value());
    };
    EXPECT_EQ(text("/Registry"), "r.yaml");
    EXPECT_EQ(found["Problems"].get_array().size(), 1U);
    EXPECT_EQ(text("/Problems/0/Object"), "host.Pipelines.P.Functions.F.Module");
    EXPECT_EQ(text("/Problems/0/Message"), "ERR_EDR_FIELD_NOT_FOUND");
    EXPECT_EQ(text("/Problems/0/Level"), "critical");
    EXPECT_THAT(text("/Problems/0/Text"), HasSubstr("no field 'DETAIL.X'"));
    EXPECT_EQ(found["Warnings"].get_array().size(), 1U);
    EXPECT_EQ(text("/Warnings/0/Message"), "ERR_REG_KEY_UNREAD");

    EXPECT_EQ(check("", {"--json"}), 0);
    EXPECT_EQ(directoryM.read("out"),
              "{\"Registry\": \"r.yaml\", \"Problems\": [], \"Warnings\": []}\n");
    directoryM.write("r.yaml", "host: [\n");
    EXPECT_EQ(HostProcess(directoryM.path(), {"check", "r.yaml", "--json"}).wait(), 3);
    found = parser.parse(directoryM.read("out"));
    EXPECT_EQ(text("/Problems/0/Message"), "ERR_CONFIGURATION");
}

} // namespace
