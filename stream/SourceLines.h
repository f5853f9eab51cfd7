// Lines of one source for one message, each of them with its number in the source.
#pragma once

#include "EdrMessage.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace stream {

class SourceLines {
public:
    std::string const& source() const noexcept { return sourceM; }
    std::size_t size() const noexcept { return linesM.size(); }
    bool isEmpty() const noexcept { return linesM.empty(); }
    std::size_t bytes() const noexcept { return textM.size(); }

    // The sums are those of the source up to the line.
    void add(std::string_view line, std::uint64_t number, SourceSums const& sums) {
        textM.append(line) += '\n';
        linesM.push_back({textM.size(), number, sums});
    }

    // Without lines, of that source.
    void begin(std::string const& source) {
        sourceM = source;
        clear();
    }
    // Their room is used again.
    void clear() noexcept {
        textM.clear();
        linesM.clear();
    }

    // The lines from index begin to before end, each with its line end.
    std::string_view text(std::size_t begin, std::size_t end) const {
        auto const first = begin == 0 ? 0 : linesM[begin - 1].end;
        return std::string_view(textM).substr(first, linesM[end - 1].end - first);
    }
    SourcePlace place(std::size_t index) const {
        return {sourceM, linesM[index].number, linesM[index].sums};
    }

private:
    struct Line {
        std::size_t end; // in the text
        std::uint64_t number;
        SourceSums sums;
    };

    std::string sourceM;
    std::string textM;
    std::vector<Line> linesM;
};

} // namespace stream
