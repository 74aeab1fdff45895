#include "LinuxDesktop/FileEvents/EventCoalescer.h"

#include <gtest/gtest.h>

namespace stemvault::file_events {
namespace {

using namespace std::chrono_literals;
using FirstEvent = EventCoalescer::FirstEvent;
using More = EventCoalescer::More;

struct Event {
    std::chrono::microseconds at;
    const char* path;
    std::uint32_t flags;
    More more = More::Unsaid;
};

using Batches = std::vector<std::pair<std::chrono::microseconds, std::string>>;

/// Adds events to a coalescer with a window of 500 ms and takes each batch when it is due. A batch
/// is returned as text: its paths, each followed by its flags.
Batches batchesOf(const std::vector<Event>& events, FirstEvent first)
{
    const EventCoalescer::Time start = EventCoalescer::Time() + 1h;
    EventCoalescer coalescer(500ms, first);
    Batches batches;
    const auto takeUntil = [&](EventCoalescer::Time end) {
        while (coalescer.due() && *coalescer.due() < end) {
            const EventCoalescer::Time due = *coalescer.due();
            const EventBatch batch = coalescer.take(due);
            std::string text;
            for (std::size_t index = 0; index < batch.paths.size(); ++index)
                text += batch.paths[index] + std::to_string(batch.flags[index]) + " ";
            batches.emplace_back(
                std::chrono::duration_cast<std::chrono::microseconds>(due - start), text);
        }
    };
    for (const Event& event : events) {
        takeUntil(start + event.at);
        coalescer.add(event.path, event.flags, event.more, start + event.at);
    }
    takeUntil(EventCoalescer::Time::max());
    return batches;
}

TEST(EventCoalescer, GathersWhatHappensInHalfASecond)
{
    const struct {
        const char* what;
        std::vector<Event> events;
        Batches batches;
        FirstEvent first = FirstEvent::AtOnce;
    } rows[] = {
        { "the first event goes out at once, and what follows at the end of the window",
            { { 0us, "a", 1 }, { 100ms, "b", 1 }, { 400ms, "c", 1 } },
            { { 0us, "a1 " }, { 500ms, "b1 c1 " } } },
        { "flags add up, in the order of the first occurrence",
            { { 0us, "x", 1 }, { 1ms, "b", 1 }, { 2ms, "a", 1 }, { 3ms, "b", 2 }, { 4ms, "b", 4 } },
            { { 0us, "x1 " }, { 500ms, "b7 a1 " } } },
        { "after half a second of quiet the next goes out at once again",
            { { 0us, "a", 1 }, { 600ms, "a", 2 } }, { { 0us, "a1 " }, { 600ms, "a2 " } } },
        { "a steady stream of events does not delay a batch",
            { { 0us, "a", 1 }, { 300ms, "a", 2 }, { 600ms, "a", 2 }, { 900ms, "a", 2 } },
            { { 0us, "a1 " }, { 500ms, "a2 " }, { 1000ms, "a2 " } } },
        { "a new file waits for the end of a short write",
            { { 0us, "a", 1, More::Expected }, { 90us, "a", 2, More::Done } }, { { 0us, "a3 " } } },
        { "a new file does not wait for the end of a long write",
            { { 0us, "a", 1, More::Expected }, { 9ms, "a", 2 } },
            { { 500us, "a1 " }, { 500500us, "a2 " } } },
        { "a new file in a busy spell waits for the next window",
            { { 0us, "x", 1 }, { 9ms, "b", 1 }, { 499ms, "a", 1, More::Expected },
                { 501ms, "a", 2, More::Done } },
            { { 0us, "x1 " }, { 500ms, "b1 " }, { 1000ms, "a3 " } } },
        { "the first event is held where that is asked for",
            { { 0us, "a", 1 }, { 300ms, "a", 2 }, { 800ms, "b", 1 } },
            { { 500ms, "a3 " }, { 1300ms, "b1 " } }, FirstEvent::Gathered },
    };
    // A finished write is due from the moment it began, although its batch is taken later.
    for (const auto& row : rows)
        EXPECT_EQ(batchesOf(row.events, row.first), row.batches) << row.what;
}

} // namespace
} // namespace stemvault::file_events
