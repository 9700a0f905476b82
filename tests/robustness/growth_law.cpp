#include "tests/robustness/growth_law.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>

#include "values/result.h"

namespace Quillmark::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

constexpr std::size_t kSizes = 4;
constexpr std::size_t kGrowth = 1 << (kSizes - 1);

/// Whatever is read needs buffers and records of its own.
constexpr std::size_t kFreeMemory = 32 << 10;

/// An encoder's buffer grows by 16 KiB until it has a MiB, which adds up to this.
constexpr std::size_t kBufferSteps = 33 << 20;

// Eight times the input takes eight times the time, and a little more for log n. A square would take 64
// times, so there is much room on both sides for a busy machine. Octets that no longer fit in a cache,
// though, cost several times as much, however they are read: for each there is a nanosecond.
constexpr int kTimeGrowth = 3 * static_cast<int>(kGrowth);
constexpr milliseconds kTimeSlack{20};
constexpr int kRounds = 4;

struct Point {
    CBlob input;
    Outcome outcome = kTaken;
    Cost cost;
};

/// Measures once more; of the time the least counts.
void measure_again(Way way, Point& point) {
    const Cost cost = measure([&] { point.outcome = way(point.input); });
    const nanoseconds least = point.cost.allocations == 0 ? cost.time : std::min(point.cost.time, cost.time);
    point.cost = cost;
    point.cost.time = least;
}

nanoseconds time_bound(const std::array<Point, kSizes>& points) {
    const Point& last = points.back();
    return kTimeGrowth * points.front().cost.time + kTimeSlack +
           nanoseconds(last.input.cbData() + last.cost.octets);
}

bool time_grows_well(const std::array<Point, kSizes>& points) {
    return points.back().cost.time <= time_bound(points);
}

double factor(const Point& point) {
    return static_cast<double>(point.cost.peak) / static_cast<double>(std::max(point.input.cbData(), 1ul));
}

std::string text_of(Outcome outcome) {
    if (outcome == kTaken) {
        return "taken";
    }
    // Statuses of the run-time are small numbers.
    return outcome > -1000 ? std::to_string(outcome) : result_name(outcome);
}

void print(const std::string& name, const Point& point) {
    std::printf("%-44s %11lu %10zu %12zu %12zu %7.1f %8zu %9.2f  %s\n", name.c_str(), point.input.cbData(),
                point.cost.allocations, point.cost.octets, point.cost.peak, factor(point), point.cost.stack,
                static_cast<double>(point.cost.time.count()) / 1e6, text_of(point.outcome).c_str());
}

void print_head() {
    std::printf("%-44s %11s %10s %12s %12s %7s %8s %9s\n", "shape", "octets", "allocs", "allocated", "peak",
                "peak/in", "stack", "ms");
}

void expect_memory(const Point& point, double memory) {
    const auto bound = static_cast<std::size_t>(memory * static_cast<double>(point.input.cbData()));
    EXPECT_LE(point.cost.peak, bound + kFreeMemory) << point.input.cbData() << " octets of input";
    EXPECT_LE(point.cost.stack, kStackBound) << point.input.cbData() << " octets of input";
}

}  // namespace

void expect_growth(const Shape& shape) {
    std::array<Point, kSizes> points;
    const std::size_t largest = shape.largest / kSizePart;
    for (std::size_t i = 0; i < kSizes; ++i) {
        points[i].input = blob_of(shape.make(largest >> (kSizes - 1 - i)));
    }
    shape.way(points.front().input);  // what the process keeps from its first call on is not counted
    for (int round = 0; round < kRounds && (round == 0 || !time_grows_well(points)); ++round) {
        for (Point& point : points) {
            measure_again(shape.way, point);
        }
    }
    print_head();
    for (const Point& point : points) {
        print(shape.name, point);
        EXPECT_EQ(point.outcome, shape.outcome) << point.input.cbData() << " octets of input";
        EXPECT_LE(point.cost.kept, kFreeMemory) << point.input.cbData() << " octets of input";
        expect_memory(point, shape.memory);
    }
    const Cost& first = points.front().cost;
    const Cost& last = points.back().cost;
    EXPECT_LE(last.allocations, kGrowth * first.allocations * 5 / 4 + 64);
    EXPECT_LE(last.octets, kGrowth * first.octets * 2 + kBufferSteps);
    EXPECT_LE(last.time, time_bound(points));
}

void expect_bounds(const std::string& name, Way way, const Octets& input, Outcome outcome, double memory) {
    Point point{.input = blob_of(input), .outcome = kTaken, .cost = {}};
    way(point.input);
    measure_again(way, point);
    print(name, point);
    EXPECT_EQ(point.outcome, outcome) << name;
    EXPECT_LE(point.cost.kept, kFreeMemory) << name;
    expect_memory(point, memory);
}

}  // namespace Quillmark::test
