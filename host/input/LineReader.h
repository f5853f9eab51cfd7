// Splits an input into lines that end with LF or CRLF; the last one may lack its end. Lines are
// views of the buffer, valid until the next call of nextLine or nextPiece, and at least padding
// bytes after them may be read.
//
// A line that is longer than the limit comes in pieces, so that it needn't fit into memory.
#pragma once

#include "input/InputFile.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace host {

class LineReader {
public:
    // The limit is in bytes, without the line end. The input must outlive the reader.
    LineReader(InputFile& input, std::size_t limit, std::size_t padding);

    // Moves to the next line, past the rest of a long one; false at the end of the input.
    // Throws a BAS::Status when reading fails.
    bool nextLine();
    // Moves to the next piece of a line that is too long; false when the line is complete.
    bool nextPiece();
    // Whether the buffer has a whole line, so that nextLine doesn't read.
    bool hasLine() const noexcept { return pieceEndM < lastLineEndM; }

    // Counts from 1.
    std::uint64_t number() const noexcept { return numberM; }
    // The bytes of the input up to the end of the line, or of the present piece of it.
    std::uint64_t offset() const noexcept { return offsetM; }
    bool isTooLong() const noexcept { return isTooLongM; }
    // Whether the present piece, which may be empty, is the line's last.
    bool isComplete() const noexcept { return isCompleteM; }
    // The line without its end; meaningless for a line that is too long.
    std::string_view line() const noexcept;
    // The line, or the present piece of it, with its end as it was read.
    std::string_view raw() const noexcept;

private:
    // Makes the bytes up to the next line end or the end of the input the present piece, or all
    // that fits the buffer if no line end does. False when nothing is left.
    bool takePiece();
    bool readMore();
    std::size_t capacity() const noexcept { return bufferM.size() - paddingM; }

    InputFile& inputM;
    std::size_t limitM;
    std::size_t paddingM;
    std::vector<char> bufferM;
    std::size_t beginM = 0; // of the present piece
    std::size_t pieceEndM = 0;
    std::size_t lastLineEndM = 0; // of the bytes read
    std::size_t endM = 0;
    std::uint64_t numberM = 0;
    std::uint64_t offsetM = 0;
    bool isTooLongM = false;
    bool isCompleteM = true;
    bool isAtEndM = false;
};

} // namespace host
