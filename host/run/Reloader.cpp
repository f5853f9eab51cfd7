#include "run/Reloader.h"

#include "DAT/LoadSession.h"
#include "base/Failures.h"

#include <malloc.h>

#include <algorithm>

namespace host {

namespace {

// The tables that have become empty, with the number of rows that they had.
std::string emptiedTables(DAT::LoadReport const& before, DAT::LoadReport const& after) {
    std::string text;
    for (auto const& table : after.tables) {
        auto const old = std::find_if(before.tables.begin(), before.tables.end(),
                                      [&](auto const& each) { return each.name == table.name; });
        if (table.rows == 0 && old != before.tables.end() && old->rows > 0) {
            text += (text.empty() ? "" : ", ") + table.name.str() + " (had " +
                    std::to_string(old->rows) + ")";
        }
    }
    return text;
}

// Throws a BAS::Status when the data can't be read or used.
std::unique_ptr<DAT::NewData> readModule(ReloadableModule const& module, DAT::LoadSession& session,
                                         bool isForced) {
    auto data = module.module->readNewData(session);
    auto const emptied = emptiedTables(module.module->loadReport(), data->report());
    if (!isForced && !emptied.empty()) {
        throw makeStatus(BAS::Status::error, module.name, "ERR_DATA_TABLE_EMPTY", {emptied});
    }
    return data;
}

} // namespace

void Reloader::begin(Reload reload) {
    ++unfinishedM;
    {
        std::lock_guard const guard(lockM);
        waitingReloadsM.push_back(std::move(reload));
    }
    waitingM.notify_one();
    if (!readerM.joinable()) {
        readerM = std::jthread([this](std::stop_token const& stop) { readAll(stop); });
    }
}

void Reloader::handBack() {
    readBellM.take();
    std::deque<Reload> read;
    {
        std::lock_guard const guard(lockM);
        read.swap(readReloadsM);
    }
    for (auto& reload : read) {
        --unfinishedM;
        reload.done(reload);
    }
}

void Reloader::stop() {
    if (readerM.joinable()) {
        readerM.request_stop();
        readerM.join();
    }
    handBack();
}

// After a stop request, waiting reloads are passed on without being read.
void Reloader::readAll(std::stop_token const& stop) {
    for (;;) {
        Reload reload;
        {
            std::unique_lock guard(lockM);
            waitingM.wait(guard, stop, [&] { return !waitingReloadsM.empty(); });
            if (waitingReloadsM.empty()) {
                return;
            }
            reload = std::move(waitingReloadsM.front());
            waitingReloadsM.pop_front();
        }
        read(reload, stop);
        {
            std::lock_guard const guard(lockM);
            readReloadsM.push_back(std::move(reload));
        }
        readBellM.ring();
    }
}

void Reloader::read(Reload& reload, std::stop_token const& stop) {
    DAT::LoadSession session(stop);
    for (auto const& module : reload.modules) {
        if (reload.failure) {
            break;
        }
        try {
            if (stop.stop_requested()) {
                throw makeStatus(BAS::Status::error, module.name, "ERR_RELOAD_GIVEN_UP", {});
            }
            reload.newData.push_back(readModule(module, session, reload.isForced));
            ::malloc_trim(0); // what reading took besides, which the next module may not fit into
        } catch (BAS::Status const& status) {
            reload.failure = status;
            reload.failure->setObjectName(module.name);
        } catch (...) {
            reload.failure = makeStatus(BAS::Status::error, module.name, "ERR_DATA_NOT_READ",
                                        {currentExceptionText()});
        }
    }
    if (reload.failure) {
        reload.newData.clear();
        // Whatever a module that was interrupted took for the reason.
        if (stop.stop_requested()) {
            reload.failure = makeStatus(BAS::Status::error, reload.failure->objectName(),
                                        "ERR_RELOAD_GIVEN_UP", {});
        }
    }
}

} // namespace host
