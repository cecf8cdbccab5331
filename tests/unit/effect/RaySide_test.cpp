#include "effect/RaySide.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <utility>
#include <vector>

namespace mv {
namespace {

struct Place {
    std::atomic<int> visitors{0};
};

TEST(SidePlaces, AreAsManyAsThreadsButNoMoreThanSides) {
    SidePlaces<Place> places;
    for (const auto& [threads, count] : {std::pair{-1, 1u}, {0, 1u}, {1, 1u}, {3, 3u}, {64, 4u}}) {
        places.SetCount(threads);
        EXPECT_EQ(places.Count(), count) << threads;
    }
}

TEST(SidePlaces, GoToOneAtATimeThoughMoreThreadsCome) {
    SidePlaces<Place> places;
    places.SetCount(2);
    std::atomic<int> most{0};
    std::atomic<int> visits{0};
    const auto visit = [&] {
        for (int i = 0; i < 2000; ++i) {
            const SidePlaces<Place>::Stay stay(places);
            Place& place = stay.Get();
            const int visitors = ++place.visitors;
            if (visitors > most) {
                most = visitors;
            }
            ++visits;
            --place.visitors;
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back(visit);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(most, 1);
    EXPECT_EQ(visits, 8000);
}

TEST(SidePlaces, AreFreeAgainBehindAStay) {
    SidePlaces<Place> places;
    places.SetCount(1);
    Place* first = nullptr;
    {
        const SidePlaces<Place>::Stay stay(places);
        first = &stay.Get();
    }
    const SidePlaces<Place>::Stay stay(places);
    EXPECT_EQ(&stay.Get(), first);
}

}  // namespace
}  // namespace mv
