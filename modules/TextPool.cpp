#include "TextPool.h"

#include <functional>
#include <limits>
#include <stdexcept>

namespace MOD {

std::string_view TextPool::operator[](Text text) const noexcept {
    auto const begin = text.place == 0 ? 0 : endsM[text.place - 1];
    return std::string_view(bytesM).substr(begin, endsM[text.place] - begin);
}

TextIntake::TextIntake(TextPool& pool) : poolM(pool), takenM(0, Hash{&pool}, Equal{&pool}) {
}

TextIntake::~TextIntake() {
    poolM.bytesM.shrink_to_fit();
    poolM.endsM.shrink_to_fit();
}

Text TextIntake::intern(std::string_view text) {
    if (auto const found = takenM.find(text); found != takenM.end()) {
        return *found;
    }
    auto const place = poolM.endsM.size();
    if (place > std::numeric_limits<std::uint32_t>::max()) {
        throw std::length_error("more different texts than a data module can hold");
    }
    poolM.bytesM += text;
    poolM.endsM.push_back(poolM.bytesM.size());
    return *takenM.insert(Text{static_cast<std::uint32_t>(place)}).first;
}

std::size_t TextIntake::Hash::operator()(std::string_view text) const noexcept {
    return std::hash<std::string_view>{}(text);
}

std::size_t TextIntake::Hash::operator()(Text text) const noexcept {
    return (*this)((*pool)[text]);
}

bool TextIntake::Equal::operator()(Text a, Text b) const noexcept {
    return (*pool)[a] == (*pool)[b];
}

bool TextIntake::Equal::operator()(Text a, std::string_view b) const noexcept {
    return (*pool)[a] == b;
}

bool TextIntake::Equal::operator()(std::string_view a, Text b) const noexcept {
    return a == (*pool)[b];
}

} // namespace MOD
