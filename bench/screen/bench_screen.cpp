// Benchmarks of the screen library: composing a full 60 x 200 page, and one read of a keystroke.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "screen/as_read.h"
#include "screen/fs.h"
#include "screen/host/test_host.h"

namespace {

constexpr int kLines = 60, kCols = 200;

// The editor's shape of page: per line a prefix field of 6 cells, a protected gap, and a text field of the rest.
std::vector<int> page_records() {
  std::vector<int> recs;
  for (int line = 1; line <= kLines; ++line) {
    int prefix[7] = {line * 2 - 1, line, 1, 1, 6, 0, 1};
    int text[7] = {line * 2, line, 8, 1, kCols - 7, 0, 1};
    recs.insert(recs.end(), prefix, prefix + 7);
    recs.insert(recs.end(), text, text + 7);
  }
  return recs;
}

void compose(const std::vector<int>& recs, const std::string& line) {
  asclear();
  asrfmt(kLines * 2, 7, recs.data());
  for (int id = 1; id <= kLines * 2; ++id) {
    if (id % 2)
      ascput(id, 6, "======");
    else
      ascput(id, static_cast<int>(line.size()), line.data());
  }
}

void start(test_host& host) {
  fs_sethost(&host);
  fs_reset();
  fsinit(0, nullptr);
}

void BM_compose_page(benchmark::State& state) {
  test_host host(kLines, kCols);
  start(host);
  const std::vector<int> recs = page_records();
  std::string line(kCols - 7, 'x');
  int turn = 0;
  for (auto _ : state) {
    line[static_cast<size_t>(turn++ % 100)] ^= 1;  // a little change each turn, as after an edit
    compose(recs, line);
    asrefresh();
  }
  state.SetItemsProcessed(state.iterations());
  fs_reset();
  fs_sethost(nullptr);
}
BENCHMARK(BM_compose_page)->Unit(benchmark::kMicrosecond);

void BM_read_keystroke(benchmark::State& state) {
  test_host host(kLines, kCols);
  start(host);
  const std::vector<int> recs = page_records();
  std::string line(kCols - 7, ' ');
  compose(recs, line);
  int kind, value, nmod;
  for (auto _ : state) {
    asfcur(2, 1, 1);
    host.key('a');
    host.key(13);
    asread(kind, value, nmod);
    benchmark::DoNotOptimize(kind);
  }
  if (kind != ASR_ENTER) state.SkipWithError("the read did not end with Enter");
  fs_reset();
  fs_sethost(nullptr);
}
BENCHMARK(BM_read_keystroke)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
