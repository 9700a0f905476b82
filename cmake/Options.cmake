option(QUILLMARK_WARNINGS_AS_ERRORS "Treat warnings as errors" OFF)
option(QUILLMARK_COVERAGE "Instrument for line coverage" OFF)
option(QUILLMARK_BUILD_BENCH "Build the benchmarks (needs Google Benchmark)" OFF)
set(QUILLMARK_SANITIZERS "" CACHE STRING "Sanitizers to build with, as for -fsanitize=")
