// What the safe save costs: a file image of N lines of 80 bytes, fed in line-sized chunks, on both roads.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

#include "os/os_save.h"

namespace {

std::string make_dir() {
  char tmpl[] = "/tmp/tolva-bench-save-XXXXXX";
  return ::mkdtemp(tmpl);
}

void run(benchmark::State& state, bool preserve_links) {
  std::string dir = make_dir();
  os_save_options o;
  o.target = dir + "/file.txt";
  o.preserve_links = preserve_links;
  const std::string line(79, 'x');
  const int64_t lines = state.range(0);
  for (auto _ : state) {
    os_save_result r = os_save(o, [&](os_save_sink& sink) {
      for (int64_t i = 0; i < lines; ++i) {
        sink.append(line);
        sink.append("\n", 1);
      }
    });
    if (!r.ok()) state.SkipWithError(r.reason.c_str());
  }
  state.SetBytesProcessed(state.iterations() * lines * 80);
  std::filesystem::remove_all(dir);
}

void BM_save_rename(benchmark::State& state) { run(state, false); }
void BM_save_in_place(benchmark::State& state) { run(state, true); }

BENCHMARK(BM_save_rename)->Arg(1000)->Arg(125000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_save_in_place)->Arg(1000)->Arg(125000)->Unit(benchmark::kMillisecond);

}  // namespace
