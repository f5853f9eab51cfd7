// Messages, places and keys without servers.
#include "EdrMessage.h"

#include "PublishedSource.h"
#include "SourceFile.h"
#include "StreamPlaces.h"
#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>

#include <map>

namespace {

using testing::HasSubstr;

// What the message decodes to, or why it can't be.
std::string outcomeOf(stream::MessageDecoder& decoder, std::string_view encoding,
                      std::string const& data) {
    try {
        std::string text(stream::MessageDecoder::decodedSize(encoding, data), '\0');
        text.resize(decoder.decode(encoding, data, text));
        return text;
    } catch (stream::MessageError const& error) {
        return error.what();
    }
}

TEST(EdrMessage, DecodesWhatWasCompressedAndRefusesDamage) {
    std::string lines;
    for (int i = 0; i < 100; ++i) {
        lines += "{\"A\":\"" + std::to_string(i * i) + "\"}\n";
    }
    stream::MessageEncoder encoder;
    stream::MessageDecoder decoder;
    auto const data = encoder.compressed(lines);
    EXPECT_LT(data.size(), lines.size());
    EXPECT_EQ(outcomeOf(decoder, "", lines), lines);

    auto damaged = data;
    damaged[data.size() / 2] ^= 0x55;
    std::string const huge(std::size_t{17} << 20, 'x');
    std::pair<std::string, char const*> const cases[] = {
        {data.substr(0, data.size() / 2), "damaged"},
        {damaged + "rest", "damaged"},
        {"", "damaged"},
        {"no zstd", "damaged"},
        {encoder.compressed(huge), "expected at most"},
    };
    for (auto const& [each, reason] : cases) {
        EXPECT_THAT(outcomeOf(decoder, "zstd", each), HasSubstr(reason));
        EXPECT_EQ(outcomeOf(decoder, "zstd", data), lines) << "after: " << reason;
    }
    EXPECT_THAT(outcomeOf(decoder, "gzip", data), HasSubstr("'gzip'"));
}

TEST(EdrMessage, ReadsHeadersExactly) {
    nats_Open(-1);
    natsMsg* foreign = nullptr;
    ASSERT_EQ(natsMsg_Create(&foreign, "edr.P.0", nullptr, "x", 1), NATS_OK);
    stream::Message const owner(foreign);
    natsMsgHeader_Set(foreign, "Edr-Line-And-More", "7");
    natsMsgHeader_Set(foreign, "E", "8");
    EXPECT_EQ(stream::placeOf(foreign).line, 0U);
    EXPECT_EQ(stream::encodingOf(foreign), "");

    auto const own = stream::makeMessage("edr.P.0", "data", {"day 1", 42});
    EXPECT_EQ(stream::placeOf(own.get()).source, "day 1");
    EXPECT_EQ(stream::placeOf(own.get()).line, 42U);
    EXPECT_EQ(stream::encodingOf(own.get()), "zstd");

    char const* const sources[] = {"day.jsonl 1 2 3",
                                   " outer ",
                                   "  ",
                                   "line\r\nEdr-Line: 7",
                                   "\t",
                                   "\x01\x7f",
                                   "100%",
                                   "%0a%",
                                   "%2",
                                   "ü",
                                   "a b"};
    for (auto const* const source : sources) {
        stream::SourcePlace const place = {source, 42, stream::SourceSums{0, 0xfedcba98}, 41};
        auto const message = stream::makeMessage("edr.P.0", "data", place);
        EXPECT_EQ(stream::placeOf(message.get()), place) << source;
        auto const sent = stream::header(message.get(), "Edr-Source");
        EXPECT_EQ(sent.find_first_of("\r\n\t\x01\x7f"), std::string::npos) << sent;
        EXPECT_FALSE(sent.starts_with(' ') || sent.ends_with(' ')) << sent;
        EXPECT_LE(sent.size(), stream::mostHeaderBytes(place));
    }
    // As they were written when there were no sums.
    auto const plain = stream::makeMessage("edr.P.0", "data", {"100%25.jsonl 1 2 3", 42});
    EXPECT_EQ(stream::placeOf(plain.get()).source, "100%25.jsonl 1 2 3");
    for (auto const* const sums : {"", "1", "1-", "-1", "1-x", "1-2-3", "123456789-1"}) {
        natsMsgHeader_Set(plain.get(), "Edr-Sums", sums);
        EXPECT_EQ(stream::placeOf(plain.get()).sums, std::nullopt) << sums;
    }
}

TEST(SourceFile, TellsFilesApart) {
    using stream::Likeness;
    struct {
        char const* one;
        char const* other;
        Likeness likeness;
    } const cases[] = {
        {"day.jsonl 1 2 3", "day.jsonl 1 5 6", Likeness::sameInode},
        {"day.jsonl 1 2 3", "day.jsonl 4 2 3", Likeness::sameName},
        {"day 1 2 3", "day.jsonl 1 2 3", Likeness::none},
        {"a day 1 2 3", "day 1 2 3", Likeness::none},
        {"a 7 day 1 2 3", "a 7 day 1 5 3", Likeness::sameInode},
        {"day", "day", Likeness::none},
        {"day 1 2 x", "day 1 2 x", Likeness::none},
        {"standard input 17", "standard input 17", Likeness::none},
    };
    for (auto const& each : cases) {
        EXPECT_EQ(stream::likenessOf(each.one, each.other), each.likeness) << each.one;
    }
}

TEST(StreamPlaces, StayAndRefuseDamage) {
    support::TemporaryDirectory directory;
    auto const file = directory.path() / "Main.places";
    stream::StreamPlace const one{5, 17, 300, 1'700'000'000'000'000'000};
    stream::StreamPlace const other{9, 0, 0, 1};
    {
        stream::StreamPlaces places(file);
        places.set(3, one);
        places.set(1, other);
        places.write();
        EXPECT_THROW(stream::StreamPlaces second(file), BAS::Status); // of another host
    }
    {
        stream::StreamPlaces places(file);
        EXPECT_EQ(places.read(3), one);
        EXPECT_EQ(places.read(0), std::nullopt);
        EXPECT_EQ(places.read(7), std::nullopt);
        places.set(3, other);
        places.write();
    }
    EXPECT_EQ(stream::StreamPlaces(file).read(1), other);
    for (auto const* const text : {"5 17 300", "5 17 300 x .", "-5 17 300 1 .", "5 17 300 1"}) {
        EXPECT_EQ(stream::parsePlace(text), std::nullopt) << text;
    }
}

TEST(KeyFields, DecideByTheFieldOfTheService) {
    stream::KeyFields keys({"A_NUMBER", "GPRS=B_NUMBER"});
    auto const at = [](std::string_view key) { return stream::hashOf(key) % 1000; };
    struct {
        char const* line;
        std::uint64_t partition;
    } const cases[] = {
        {R"({"A_NUMBER":"49","B_NUMBER":"50"})", at("49")},
        {R"({"A_NUMBER" : "49", "INTERN_SERVICE_CODE": "TEL"})", at("49")},
        {R"({"INTERN_SERVICE_CODE":"GPRS","A_NUMBER":"49","B_NUMBER":50})", at("50")},
        {R"({"TEXT":"\"A_NUMBER\":1","A_NUMBER":"49"})", at("49")},
        {R"({"A_NUMBER":"\u0034\u0039"})", at("49")},
        {R"({"A_NUMBER":"4\"9\\"})", at("4\"9\\")},
        {R"({"CUST_A":[{"A_NUMBER":"50"}],"A_NUMBER":"49"})", at("49")},
        {R"({"CUST_A":[{"A_NUMBER":"50"}]})", 0},
        {R"({"A_NUMBER":["49"]})", 0},
        {R"({"A_NUMBER":null})", 0},
        {R"({"RECORD":"HEADER"})", 0},
        {"no JSON", 0},
        {"", 0},
    };
    for (auto const& each : cases) {
        simdjson::padded_string const line(std::string_view(each.line));
        EXPECT_EQ(keys.partitionOf(line, 1000), each.partition) << each.line;
    }
    EXPECT_EQ(stream::hashOf("foobar"), 0x85944171f73967e8U);
    EXPECT_THROW(stream::KeyFields({"A", "B"}), std::invalid_argument);
    EXPECT_THROW(stream::KeyFields({"GPRS="}), std::invalid_argument);
    EXPECT_THROW(stream::KeyFields({"=A"}), std::invalid_argument);
}

} // namespace
