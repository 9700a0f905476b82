// Asks an authority for stamps over 1, 2, 8 and 64 connections, checks every one, and prints how many a
// second it gives and how long a client waits, beside what its key alone can do on this machine.
//
// The exit status is 1 when any stamp was refused or wrong, when a serial number came twice, and when the
// process of the authority grew by more than --growth.

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "bench/authority_load/client.h"
#include "bench/authority_load/key.h"
#include "values/result.h"

namespace {

using namespace Quillmark;
using namespace Quillmark::bench;
using Clock = std::chrono::steady_clock;

constexpr double kMebi = 1024.0 * 1024.0;

struct Options {
    std::string address = "127.0.0.1";
    std::uint16_t port = 0;
    std::string certificate;
    std::string key;
    int process = 0;
    std::vector<unsigned int> connections{1, 2, 8, 64};
    std::uint64_t stamps = 200000;
    std::uint64_t warm_up = 5000;
    double growth = 4;
    unsigned int raw_milliseconds = 2000;
};

Options parse(CLI::App& app, int argc, char** argv) {
    Options options;
    app.add_option("--address", options.address, "IPv4 address of the authority")->capture_default_str();
    app.add_option("--port", options.port, "Its port")->required();
    app.add_option("--certificate", options.certificate, "PEM file of its certificate")->required();
    app.add_option("--key", options.key, "PEM file of its key, to measure what the key alone can do")
        ->required();
    app.add_option("--process", options.process, "Its process, whose memory is watched")->required();
    app.add_option("--connections", options.connections, "How many at once, one round for each number")
        ->delimiter(',')
        ->check(CLI::Range(1, 1000))
        ->capture_default_str();
    app.add_option("--stamps", options.stamps, "Of all rounds together, behind the warm-up")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    app.add_option("--warm-up", options.warm_up, "Stamps before anything is measured")->capture_default_str();
    app.add_option("--growth", options.growth, "MiB by which the authority may grow")->capture_default_str();
    app.add_option("--raw-time", options.raw_milliseconds, "Milliseconds to measure the key for")
        ->capture_default_str();
    app.parse(argc, argv);
    return options;
}

// The system's view of the authority.
class WatchedProcess {
  public:
    explicit WatchedProcess(int process) : folder_("/proc/" + std::to_string(process)) {}

    /// Resident memory in MiB: the second figure of statm, in pages (proc(5)).
    double resident() const {
        std::ifstream statm(folder_ + "/statm");
        std::uint64_t all = 0;
        std::uint64_t pages = 0;
        require(static_cast<bool>(statm >> all >> pages));
        return static_cast<double>(pages) * static_cast<double>(sysconf(_SC_PAGESIZE)) / kMebi;
    }

    /// Processor time of all its threads in seconds: utime and stime, the 14th and 15th field of stat, in
    /// ticks.
    double processor_time() const {
        std::ifstream stat(folder_ + "/stat");
        std::string field;
        std::getline(stat, field, ')');  // the second, which may hold blanks
        for (int number = 3; number < 14; ++number) {
            stat >> field;
        }
        std::uint64_t user = 0;
        std::uint64_t system = 0;
        require(static_cast<bool>(stat >> user >> system));
        return static_cast<double>(user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
    }

  private:
    void require(bool was_read) const {
        if (!was_read) {
            throw std::runtime_error("the authority is no more: nothing to read in " + folder_);
        }
    }

    std::string folder_;
};

struct Round {
    std::vector<Stamp> stamps;
    std::chrono::duration<double> time{0};
    double processor_time = 0;  // of the authority, in seconds

    double rate() const { return static_cast<double>(stamps.size()) / time.count(); }
    double processor_microseconds() const {
        return 1e6 * processor_time / static_cast<double>(stamps.size());
    }
};

// What the threads of a round share: how many stamps are left, and the first failure of any of them.
class Work {
  public:
    explicit Work(std::uint64_t stamps) : left_(static_cast<std::int64_t>(stamps)) {}

    bool take() { return left_.fetch_sub(1) > 0; }

    void fail(const std::string& why) {
        left_ = 0;
        const std::lock_guard lock(mutex_);
        if (failure_.empty()) {
            failure_ = why;
        }
    }

    void add(std::vector<Stamp>&& stamps) {
        const std::lock_guard lock(mutex_);
        stamps_.insert(stamps_.end(), std::make_move_iterator(stamps.begin()),
                       std::make_move_iterator(stamps.end()));
    }

    /// The stamps of all threads. Throws what the first that failed said.
    std::vector<Stamp> result() {
        if (!failure_.empty()) {
            throw std::runtime_error(failure_);
        }
        return std::move(stamps_);
    }

  private:
    std::atomic<std::int64_t> left_;
    std::mutex mutex_;
    std::string failure_;
    std::vector<Stamp> stamps_;
};

void ask_often(const Target& target, Work& work) try {
    Client client(target);
    std::vector<Stamp> stamps;
    while (work.take()) {
        stamps.push_back(client.ask());
    }
    work.add(std::move(stamps));
} catch (const CAtlException& failure) {
    work.fail(std::string("an answer cannot be read: ") + result_name(failure));
} catch (const std::exception& failure) {
    work.fail(failure.what());
}

Round run_round(const Target& target, const WatchedProcess& authority, unsigned int connections,
                std::uint64_t stamps) {
    Work work(stamps);
    const double processor_time = authority.processor_time();
    const Clock::time_point begun = Clock::now();
    std::vector<std::jthread> threads;
    for (unsigned int number = 0; number < connections; ++number) {
        threads.emplace_back([&] { ask_often(target, work); });
    }
    threads.clear();  // joins them
    return {.stamps = work.result(),
            .time = Clock::now() - begun,
            .processor_time = authority.processor_time() - processor_time};
}

// The latency in milliseconds that `share` of the stamps did not exceed.
double percentile(std::vector<Stamp>& stamps, double share) {
    if (stamps.empty()) {
        return 0;
    }
    const auto rank = static_cast<std::ptrdiff_t>(share * static_cast<double>(stamps.size() - 1));
    std::nth_element(stamps.begin(), stamps.begin() + rank, stamps.end(),
                     [](const Stamp& left, const Stamp& right) { return left.latency < right.latency; });
    return std::chrono::duration<double, std::milli>(stamps[static_cast<std::size_t>(rank)].latency).count();
}

void print(unsigned int connections, Round& round, double raw_rate) {
    std::printf("%11u %9zu %11.0f %6.0f%% %10.2f %8.2f %12.0f\n", connections, round.stamps.size(),
                round.rate(), 100 * round.rate() / raw_rate, percentile(round.stamps, 0.5),
                percentile(round.stamps, 0.99), round.processor_microseconds());
    std::fflush(stdout);
}

// Serial numbers of all rounds, the warm-up among them.
class SerialNumbers {
  public:
    void take(std::vector<Stamp>&& stamps) {
        for (Stamp& stamp : stamps) {
            all_.push_back(std::move(stamp.serial_number));
        }
    }

    /// How many there are. Throws when one came twice.
    std::size_t check() {
        std::ranges::sort(all_);
        const auto twice = std::ranges::adjacent_find(all_);
        if (twice != all_.end()) {
            throw std::runtime_error("the serial number " + *twice + " came twice");
        }
        return all_.size();
    }

  private:
    std::vector<std::string> all_;
};

// The raw rates of one thread and of all processors; returns the second.
double print_raw_rates(const Options& options) {
    const std::chrono::milliseconds time(options.raw_milliseconds);
    const unsigned int processors = std::max(1U, std::thread::hardware_concurrency());
    std::printf("signatures a second by the key alone: %.0f with one thread",
                raw_signature_rate(options.key, 1, time));
    const double all = raw_signature_rate(options.key, processors, time);
    std::printf(", %.0f with %u\n\n", all, processors);
    return all;
}

void run(const Options& options) {
    const Target target{options.address, options.port, read_certificate(options.certificate)};
    const double raw_rate = print_raw_rates(options);

    const WatchedProcess authority(options.process);
    SerialNumbers serial_numbers;
    const unsigned int most = *std::ranges::max_element(options.connections);
    serial_numbers.take(run_round(target, authority, most, options.warm_up).stamps);
    const double before = authority.resident();

    std::printf("connections    stamps  per second  of raw  median ms  99th ms  processor us\n");
    const std::uint64_t rounds = options.connections.size();
    for (std::uint64_t number = 0; number < rounds; ++number) {
        // The remainder goes to the first rounds, so that all of them together are what was asked for.
        const std::uint64_t stamps = options.stamps / rounds + (number < options.stamps % rounds ? 1 : 0);
        Round round = run_round(target, authority, options.connections[number], stamps);
        print(options.connections[number], round, raw_rate);
        serial_numbers.take(std::move(round.stamps));
    }
    const double after = authority.resident();

    std::printf("\n%zu stamps checked, no serial number twice\n", serial_numbers.check());
    std::printf(
        "resident memory of the authority: %.1f MiB after %llu stamps, %.1f MiB after %llu more (%+.1f, at "
        "most %+.1f)\n",
        before, static_cast<unsigned long long>(options.warm_up), after,
        static_cast<unsigned long long>(options.stamps), after - before, options.growth);
    if (after - before > options.growth) {
        throw std::runtime_error("the authority grew");
    }
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Asks an authority for stamps, checks every one, and prints how many a second it gives.",
                 "authority_load");
    try {
        run(parse(app, argc, argv));
        return 0;
    } catch (const CLI::ParseError& failure) {
        return app.exit(failure);
    } catch (const CAtlException& failure) {
        std::fprintf(stderr, "authority_load: %s\n", result_name(failure));
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "authority_load: %s\n", failure.what());
    }
    return 1;
}
