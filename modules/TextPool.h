// The texts of one data module's rows, each kept once; a row has a number of four bytes instead.
// The pool owns the bytes. It grows through a TextIntake while rows are loaded and does not change
// afterwards; views are valid until it grows.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace MOD {

// The place of a text in its pool.
struct Text {
    std::uint32_t place = 0;
};

class TextPool {
public:
    std::string_view operator[](Text text) const noexcept;

private:
    friend class TextIntake;

    std::string bytesM;
    // Where each text ends in the bytes.
    std::vector<std::size_t> endsM;
};

// Adds texts to a pool. It knows only the texts that it added itself, so one intake fills one pool.
class TextIntake {
public:
    explicit TextIntake(TextPool& pool);
    TextIntake(TextIntake const&) = delete;
    TextIntake& operator=(TextIntake const&) = delete;
    // Frees the pool's spare storage.
    ~TextIntake();

    TextPool const& pool() const noexcept { return poolM; }

    // Throws std::length_error when the pool can't take more texts.
    Text intern(std::string_view text);

private:
    // Finds a text by its bytes.
    struct Hash {
        using is_transparent = void;
        TextPool const* pool;
        std::size_t operator()(std::string_view text) const noexcept;
        std::size_t operator()(Text text) const noexcept;
    };
    struct Equal {
        using is_transparent = void;
        TextPool const* pool;
        bool operator()(Text a, Text b) const noexcept;
        bool operator()(Text a, std::string_view b) const noexcept;
        bool operator()(std::string_view a, Text b) const noexcept;
    };

    TextPool& poolM;
    std::unordered_set<Text, Hash, Equal> takenM;
};

} // namespace MOD
