// Inserting and deleting single lines in the middle of a 10,000,000-line file.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "editor/ring.h"
#include "editor/startup.h"
#include "editor/state.h"

namespace {

void make_big_file(int32_t lines) {
  xf_state_reset();
  xf_run.batch = 1;
  xfini(24, 80);
  xf_new_file();
  std::vector<xf_text> texts;
  texts.reserve(lines);
  std::string line(72, 'x');
  for (int32_t i = 0; i < lines; ++i) texts.push_back(xf_new_text(line));
  xf_do('I', nullptr, -1, lines, 0, &texts, "bench");
}

void BM_InsertDeleteMiddle(benchmark::State& state) {
  const int32_t lines = static_cast<int32_t>(state.range(0));
  make_big_file(lines);
  const int32_t middle = lines / 2;
  for (auto _ : state) {
    xf_do('i', xf_new_text("a new line in the middle"), middle, 1, 1, nullptr, "bench");
    xf_do('d', nullptr, middle + 1, 1, 1, nullptr, "bench");
  }
  state.counters["lines"] = lines;
  xf_ring_reset();
}
BENCHMARK(BM_InsertDeleteMiddle)->Arg(10'000'000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
