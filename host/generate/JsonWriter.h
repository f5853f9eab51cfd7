// Writes lines of JSON, one object a line, whose members are strings and arrays of objects. Names
// and values are written unchanged, so they must not need escapes.
#pragma once

#include "generate/GeneratedFile.h"

#include <concepts>
#include <cstdint>
#include <utility>

namespace host {

class JsonWriter {
public:
    // The file stays the caller's and throws a BAS::Status when it can't be written.
    explicit JsonWriter(GeneratedFile& file) : fileM(file) {}

    JsonWriter& member(std::string_view name, std::string_view value) {
        fileM.write(separator(), "\"", name, "\":\"", value, "\"");
        return *this;
    }
    JsonWriter& member(std::string_view name, std::integral auto number) {
        fmt::format_int const digits(number);
        return member(name, std::string_view(digits.data(), digits.size()));
    }
    // A string that refers to an object of the reference database.
    JsonWriter& reference(std::string_view name, std::uint64_t number) {
        fmt::format_int const digits(number);
        fileM.write(separator(), "\"", name, "\":\"1_",
                    std::string_view(digits.data(), digits.size()), "\"");
        return *this;
    }
    JsonWriter& beginArray(std::string_view name) {
        fileM.write(separator(), "\"", name, "\":[");
        return begin();
    }
    JsonWriter& endArray() { return end("]"); }
    JsonWriter& beginObject() {
        fileM.write(separator(), "{");
        return begin();
    }
    JsonWriter& endObject() { return end("}"); }
    void endLine() {
        fileM.write("\n");
        begin();
    }

private:
    std::string_view separator() noexcept { return std::exchange(isFirstM, false) ? "" : ","; }
    JsonWriter& begin() noexcept {
        isFirstM = true;
        return *this;
    }
    JsonWriter& end(std::string_view bracket) {
        fileM.write(bracket);
        isFirstM = false;
        return *this;
    }

    GeneratedFile& fileM;
    bool isFirstM = true; // of its object, array or file
};

} // namespace host
