#include "kvlib/per_thread_data.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "kvlib/critical_section.h"
#include "kvlib/error_list.h"

namespace {

std::vector<KvThreadInfo*> records() {
    std::vector<KvThreadInfo*> result;
    auto* record = static_cast<KvThreadInfo*>(mdsGetPerTaskData(kTaskSlotThreadRecords));
    for (; record != nullptr; record = record->next) {
        result.push_back(record);
    }
    return result;
}

// A thread that takes a record when it is made and keeps it until it is told to leave. The record is `record()`.
class Visitor {
public:
    Visitor() : thread_([this] { stay(); }) { slot_ = arrived_.get_future().get(); }
    ~Visitor() { leave(); }

    KvThreadInfo* record() const {
        for (KvThreadInfo* candidate : records()) {
            if (candidate->slots == slot_) {
                return candidate;
            }
        }
        return nullptr;
    }
    void leave() {
        if (thread_.joinable()) {
            leave_.set_value();
            thread_.join();
        }
    }

private:
    void stay() {
        mdsPerThreadInit();
        arrived_.set_value(mdsGetPerThreadDataAddress(0));
        leave_.get_future().wait();
        mdsPerThreadTerm();
    }

    std::promise<void**> arrived_;
    std::promise<void> leave_;
    void** slot_ = nullptr;
    std::thread thread_;
};

TEST(PerThreadData, CountsUsesAndClearsSlots) {
    std::thread([] {
        int value = 0;
        EXPECT_EQ(mdsGetPerThreadDataAddress(1), nullptr);
        mdsSetPerThreadData(1, &value);
        EXPECT_EQ(mdsGetPerThreadData(1), nullptr) << "no record yet";
        mdsPerThreadTerm();
        ASSERT_EQ(mdsPerThreadInit(), 1);
        ASSERT_EQ(mdsPerThreadInit(), 1);
        mdsSetPerThreadData(1, &value);
        mdsPerThreadTerm();
        EXPECT_EQ(mdsGetPerThreadData(1), &value) << "one use is left";
        EXPECT_EQ(*mdsGetPerThreadDataAddress(1), &value);
        mdsPerThreadTerm();
        EXPECT_EQ(mdsGetPerThreadData(1), nullptr);
        ASSERT_EQ(mdsPerThreadInit(), 1);
        EXPECT_EQ(mdsGetPerThreadData(1), nullptr) << "a reused record is empty";
        mdsSetPerThreadData(kPerThreadSlots, &value);
        EXPECT_EQ(mdsGetPerThreadData(kPerThreadSlots), nullptr);
        EXPECT_EQ(mdsGetPerThreadDataAddress(kPerThreadSlots), nullptr);
        mdsPerThreadTerm();
    }).join();
}

TEST(PerThreadData, ReusesFreeRecordsExceptTheLast) {
    // Whatever other tests left: three visitors more than there are records make sure that the last one is free later.
    Visitor first;
    std::vector<std::unique_ptr<Visitor>> crowd;
    for (std::size_t wanted = records().size() + 3; records().size() < wanted;) {
        crowd.push_back(std::make_unique<Visitor>());
    }
    const std::vector<KvThreadInfo*> before = records();
    ASSERT_EQ(crowd.back()->record(), before.back());

    // Only the last record is free: a newcomer gets a new one.
    crowd.back()->leave();
    auto newcomer = std::make_unique<Visitor>();
    EXPECT_EQ(records().size(), before.size() + 1);
    EXPECT_EQ(newcomer->record(), records().back());
    newcomer->leave();

    // What was the last one is in the middle now and is taken; so is one that becomes free before it.
    Visitor middle;
    EXPECT_EQ(middle.record(), before.back());
    KvThreadInfo* freed = crowd[crowd.size() - 2]->record();
    crowd[crowd.size() - 2]->leave();
    Visitor other;
    EXPECT_EQ(other.record(), freed);
    EXPECT_EQ(records().size(), before.size() + 1);
}

TEST(PerThreadData, ThreadsComeAndGoWithListsOfTheirOwn) {
    auto work = [](std::uint16_t base) {
        for (std::uint16_t i = 0; i < 200; i++) {
            KvErrorList list;
            KvErrorKeeper::setErrorList(&list);
            auto number = static_cast<std::uint16_t>(base + i);
            addError(number, u"text");
            ramAddMemoryError();
            KvErrorKeeper::clearLastError();
            addError(number, "%1");
            ASSERT_EQ(KvErrorKeeper::getLastErrorNumber(), number);
            ASSERT_EQ(KvErrorKeeper::giveUpErrorList(), &list);
        }
    };
    std::vector<std::thread> threads;
    for (std::uint16_t i = 0; i < 8; i++) {
        threads.emplace_back(work, static_cast<std::uint16_t>(1000 * i));
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(KvErrorKeeper::currentList(), nullptr);
}

TEST(CriticalSection, IsRecursiveExclusiveAndCanBeSwitchedOff) {
    KvCriticalSection section;
    KvSemaphore semaphore;
    int guarded = 0;
    auto count = [&] {
        for (int i = 0; i < 5000; i++) {
            std::lock_guard outer(section);
            std::lock_guard inner(section);
            std::lock_guard sole(semaphore);
            guarded++;
        }
    };
    std::thread other(count);
    count();
    other.join();
    EXPECT_EQ(guarded, 10000);

    section.setLocking(false);
    section.lock();
    bool passed = false;
    std::thread([&] {
        std::lock_guard guard(section);
        passed = true;
    }).join();
    EXPECT_TRUE(passed);
    section.unlock();
}

}  // namespace
