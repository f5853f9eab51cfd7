// What becomes of the plug-in when memory runs out: at each allocation of an operation in turn, for
// once and from there on. The operation may be lost; the store is never half built, and the next
// batch is captured as if nothing had been.
#include "DataDump/PlugInFixture.h"
#include "support/AllocationCounter.h"

#include <cstdint>
#include <functional>
#include <new>

namespace DataDumpTest {

namespace {

constexpr char const* longText = "a text that is too long for the storage within a string";

class AllocationFailure : public PlugInFixture {
protected:
    AllocationFailure() {
        keys["NumberOfEvents"] = "4";
        keys["RatePlanType"] = std::string(longText) + ",R";
        for (auto const* const module : {"Rateplan", "Price", "Balance", "Discount"}) {
            keys[std::string(module) + "DataModule"] = module;
        }
        prepare();
        fewEdrs = makeBatch("b", 4);
        moreEdrs = makeBatch(longText, 6);
    }

    void start() {
        plugIn.reset();
        plugIn = std::make_unique<Probe>(plugInName);
    }

    // Batches are made beforehand: only what the plug-in allocates is to fail.
    struct Batch {
        std::vector<std::unique_ptr<EDR::Container>> containers;
        RWTPtrOrderedVector<EDR::Container> edrs;
    };
    // Every text of the EDRs is that one, but for the customers' numbers after it.
    Batch makeBatch(char const* text, int customers) {
        Batch batch;
        for (int customer = 1; customer <= customers; ++customer) {
            auto const number = text + std::to_string(customer);
            batch.containers.push_back(std::make_unique<EDR::Container>(description));
            batch.edrs.append(batch.containers.back().get());
            support::fill(*batch.containers.back(), description, fullEdr(number.c_str(), text));
        }
        return batch;
    }

    void capture(Batch& batch) { plugIn->processEdrContainer(batch.edrs); }

    void command(char const* key) {
        BAS::RegistryEntry entry("update");
        entry.add(key, (directory.path() / "out").string());
        BAS::ProtectedBool workDone;
        plugIn->registryUpdate(&entry, workDone);
    }

    void expectWholeStore() {
        EXPECT_EQ(plugIn->eventQueue.size(), plugIn->eventMap.entries());
        EXPECT_LE(plugIn->eventQueue.size(), plugIn->numberOfEvents);
        for (auto const* const event : plugIn->eventQueue) {
            ASSERT_NE(event, nullptr);
            EXPECT_EQ(plugIn->eventMap.find(*event), event);
            EXPECT_EQ(*event->placeInQueue, event);
            if (event->hasRecord) {
                expectOneEdr(event->record);
            }
        }
        EXPECT_EQ(plugIn->eventQueue.empty(), report().empty());
    }

    // All texts of a record are those of one EDR.
    static void expectOneEdr(FCT::DataDump::EventDetailRecord const& record) {
        auto const& text = record.eventType;
        EXPECT_TRUE(record.identifier.str().starts_with(text.str()));
        EXPECT_EQ(record.serviceType, text);
        EXPECT_EQ(record.accountInfo.productInfo.name, text);
        ASSERT_EQ(record.accountInfo.ownDiscounts.entries(), 1U);
        EXPECT_EQ(record.accountInfo.ownDiscounts[0].name, text);
        ASSERT_EQ(record.sharingMap.entries(), 2U);
        EXPECT_EQ(record.sharingMap[0].owner.ownerType, text);
        for (std::size_t i = 0; i < 2; ++i) {
            ASSERT_EQ(record.sharingMap[i].items.entries(), 1U);
            EXPECT_EQ(record.sharingMap[i].items[0].name, text);
        }
    }

    // The operation with its allocations failing. Returns false when it made too few to fail.
    static bool failAt(std::size_t after, std::size_t count,
                       std::function<void()> const& operation) {
        support::failAllocations(after, count);
        try {
            operation();
        } catch (std::bad_alloc const&) {
            // Its caller's to cope with.
        }
        return support::stopFailingAllocations();
    }

    Batch fewEdrs;
    Batch moreEdrs;
    RateplanModule rateplan{"host.DataPool.Rateplan.Module", calls};
    PriceModule price{"host.DataPool.Price.Module", calls};
    BalanceModule balance{"host.DataPool.Balance.Module", calls};
    DiscountModule discount{"host.DataPool.Discount.Module", calls};
};

TEST_F(AllocationFailure, LeavesAWholeStoreAndThePlugInAtWork) {
    struct {
        char const* name;
        std::function<void()> prepare;
        std::function<void()> operation;
        bool changesStore;
    } const cases[] = {
        {"fill", [] {}, [&] { capture(moreEdrs); }, true},
        {"evict", [&] { capture(fewEdrs); }, [&] { capture(moreEdrs); }, true},
        {"report", [&] { capture(fewEdrs); }, [&] { command("DumpEvents"); }, false},
        {"dump", [&] { capture(fewEdrs); }, [&] { command("Dump"); }, false},
        {"clear", [&] { capture(fewEdrs); }, [&] { command("ClearData"); }, true},
        {"stop", [&] { capture(fewEdrs); }, [&] { plugIn.reset(); }, true},
    };
    start();
    capture(moreEdrs);
    auto const expected = report();
    for (auto const& each : cases) {
        for (std::size_t const count : {std::size_t{1}, SIZE_MAX}) {
            bool anyFailed = true;
            for (std::size_t after = 0; anyFailed; ++after) {
                SCOPED_TRACE(each.name + (" " + std::to_string(after)));
                start();
                each.prepare();
                auto const before = report();
                anyFailed = failAt(after, count, each.operation);
                if (plugIn == nullptr) {
                    start();
                }
                expectWholeStore();
                if (!each.changesStore) {
                    EXPECT_EQ(report(), before);
                }
                capture(moreEdrs);
                expectWholeStore();
                ASSERT_EQ(report(), expected);
            }
        }
    }
}

TEST_F(AllocationFailure, EndsAStartThatCanBeTriedAgain) {
    for (std::size_t const count : {std::size_t{1}, SIZE_MAX}) {
        bool anyFailed = true;
        for (std::size_t after = 0; anyFailed; ++after) {
            SCOPED_TRACE(after);
            anyFailed = failAt(after, count, [&] { start(); });
            bool const isUsable = plugIn != nullptr && plugIn->isUsable();
            EXPECT_TRUE(isUsable || anyFailed);
            if (isUsable) {
                EXPECT_EQ(plugIn->serviceFieldMap.size(), 3U);
                EXPECT_EQ(texts(plugIn->ratePlanTypes), (std::vector<std::string>{longText, "R"}));
            }
            plugIn.reset();
            EXPECT_EQ(BAS::RegisteredObject::find(plugInName), nullptr);
        }
    }
    start();
    EXPECT_TRUE(plugIn->isUsable());
}

} // namespace

} // namespace DataDumpTest
