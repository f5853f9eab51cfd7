#include "RW/RWDBReader.h"

#include "RW/RWDBConnection.h"
#include "RW/RWDBSelector.h"

#include <soci/soci.h>

#include <string>
#include <vector>

struct RWDBReader::Rows {
    Rows(std::shared_ptr<soci::session> openSession, RWDBSelector const& selector)
        : session(std::move(openSession)), bound(selector.values()), texts(selector.columnCount()),
          indicators(selector.columnCount()), statement(*session) {
        for (std::size_t i = 0; i < texts.size(); ++i) {
            statement.exchange(soci::into(texts[i], indicators[i]));
        }
        for (auto const& value : bound) {
            statement.exchange(soci::use(value));
        }
        statement.alloc();
        statement.prepare(selector.statementText());
        statement.define_and_bind();
        statement.execute(false);
    }

    // The statement refers to the members before it.
    std::shared_ptr<soci::session> session;
    std::vector<std::string> bound;
    std::vector<std::string> texts;
    std::vector<soci::indicator> indicators;
    soci::statement statement;
    std::size_t nextColumn = 0;
};

RWDBReader::RWDBReader(RWDBConnection const& connection, RWDBSelector const& selector)
    : statusM(connection.status()) {
    if (!isValid()) {
        return;
    }
    try {
        rowsM = std::make_unique<Rows>(connection.sessionM, selector);
    } catch (std::exception const& error) {
        fail(error.what());
    }
}

RWDBReader::RWDBReader(RWDBReader&&) noexcept = default;
RWDBReader& RWDBReader::operator=(RWDBReader&&) noexcept = default;
RWDBReader::~RWDBReader() = default;

bool RWDBReader::operator()() {
    if (!isValid()) {
        return false;
    }
    try {
        rowsM->nextColumn = 0;
        return rowsM->statement.fetch();
    } catch (std::exception const& error) {
        fail(error.what());
        return true;
    }
}

RWDBReader& RWDBReader::operator>>(RWCString& text) {
    if (!isValid()) {
        return *this;
    }
    if (rowsM->nextColumn == rowsM->texts.size()) {
        fail("more columns were read than were selected");
        return *this;
    }
    auto const column = rowsM->nextColumn++;
    if (rowsM->indicators[column] == soci::i_null) {
        text.clear();
    } else {
        text.assign(rowsM->texts[column]);
    }
    return *this;
}

bool RWDBReader::wasNull() const noexcept {
    return isValid() && rowsM->nextColumn > 0 &&
           rowsM->indicators[rowsM->nextColumn - 1] == soci::i_null;
}

void RWDBReader::fail(char const* what) {
    statusM = RWDBStatus(what);
}
