// Every operation of this library beside OpenSSL's own time-stamp functions, in one process and on the same
// bytes; the raw signature and verification stand beside them as floors.

#include <benchmark/benchmark.h>

#include <memory>

#include "bench/allocations.h"
#include "bench/sides.h"

namespace {

using namespace Quillmark::bench;

template <typename Work>
void add(const char* name, Work work) {
    benchmark::RegisterBenchmark(name, [work](benchmark::State& state) {
        work();  // what is made once a process is made before the clock runs
        const std::uint64_t before = allocation_count();
        for (auto _ : state) {
            work();
        }
        state.counters["allocations"] = benchmark::Counter(static_cast<double>(allocation_count() - before) /
                                                           static_cast<double>(state.iterations()));
    })->Unit(benchmark::kMicrosecond);
}

template <typename Value>
void keep(Value value) {
    benchmark::DoNotOptimize(value);
}

void add_all() {
    add("request_decode/ours", [] { keep(ours::request_decode()); });
    add("request_decode/openssl", [] { keep(openssl::request_decode()); });
    add("request_build_encode/ours", [] { keep(ours::request_build_encode()); });
    add("request_build_encode/openssl", [] { keep(openssl::request_build_encode()); });
    add("response_decode/ours", [] { keep(ours::response_decode()); });
    add("response_decode/openssl", [] { keep(openssl::response_decode()); });

    const auto our_encoder = std::make_shared<ours::ResponseEncoder>();
    const auto their_encoder = std::make_shared<openssl::ResponseEncoder>();
    add("response_encode/ours", [our_encoder] { keep(our_encoder->encode()); });
    add("response_encode/openssl", [their_encoder] { keep(their_encoder->encode()); });

    add("authority_p256/ours", [] { keep(ours::authority_step(KeyKind::P256)); });
    add("authority_p256/openssl", [] { keep(openssl::authority_step(KeyKind::P256)); });
    add("authority_rsa2048/ours", [] { keep(ours::authority_step(KeyKind::Rsa2048)); });
    add("authority_rsa2048/openssl", [] { keep(openssl::authority_step(KeyKind::Rsa2048)); });

    add("client_p256/ours", [] { ours::client_step(KeyKind::P256); });
    add("client_p256/openssl", [] { openssl::client_step(KeyKind::P256); });
    add("client_rsa2048/ours", [] { ours::client_step(KeyKind::Rsa2048); });
    add("client_rsa2048/openssl", [] { openssl::client_step(KeyKind::Rsa2048); });

    const auto message = std::make_shared<ours::SignedMessage>(KeyKind::P256);
    add("message_p256/ours", [message] { message->build(); });

    add("sign_p256/floor", [] { openssl::sign(KeyKind::P256); });
    add("verify_p256/floor", [] { openssl::verify(KeyKind::P256); });
    add("sign_rsa2048/floor", [] { openssl::sign(KeyKind::Rsa2048); });
    add("verify_rsa2048/floor", [] { openssl::verify(KeyKind::Rsa2048); });
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    add_all();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
