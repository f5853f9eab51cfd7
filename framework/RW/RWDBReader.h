// The rows of a selector that was run, one at a time, front to back. Every value comes as its text,
// so that no number loses digits on its way. It never throws: a reader whose statement failed, at
// once or while rows were fetched, is not valid and has the reason in its status. The database
// keeps the statement open as long as the reader lives.
#pragma once

#include "RW/RWDBStatus.h"

#include <cstddef>
#include <memory>

class RWDBConnection;
class RWDBSelector;

class RWDBReader {
public:
    RWDBReader(RWDBConnection const& connection, RWDBSelector const& selector);
    RWDBReader(RWDBReader&&) noexcept;
    RWDBReader& operator=(RWDBReader&&) noexcept;
    ~RWDBReader();

    bool isValid() const noexcept { return statusM.isValid(); }
    RWDBStatus const& status() const noexcept { return statusM; }

    // Moves to the next row; false when there is none. When fetching it fails, it is true once and
    // the reader is no longer valid, so that whoever reads the columns and then looks at the reader
    // doesn't take the failure for the end.
    bool operator()();

    // Reads the next column of the current row; NULL is the empty text. Without a further column
    // the reader becomes invalid and the text stays unchanged.
    RWDBReader& operator>>(RWCString& text);

    // Whether the last column was NULL.
    bool wasNull() const noexcept;

private:
    struct Rows;

    void fail(char const* what);

    RWDBStatus statusM;
    std::unique_ptr<Rows> rowsM;
};
