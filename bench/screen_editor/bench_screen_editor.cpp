// The interactive editor's cycle on a 60 x 200 screen over a 1,000,000-line file: CPU per keystroke (a typed
// character, a page down), and the bytes the terminal receives for a one-character change.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "editor/command.h"
#include "editor/compose.h"
#include "editor/input.h"
#include "editor/keys.h"
#include "editor/ring.h"
#include "editor/startup.h"
#include "editor/state.h"
#include "screen/as_read.h"
#include "screen/fs.h"
#include "screen/host/test_host.h"
#include "term_pty.h"

namespace {

constexpr int kRows = 60, kCols = 200, kLines = 1'000'000;

void editor_on(fs_host* host) {
  fs_sethost(host);
  fs_reset();
  fsinit(0, nullptr);
  xf_state_reset();
  xf_screen_reset();
  xf_input_reset();
  xf_keys_reset();
  xf_run.batch = 0;
  xf_run.work_dir = "/tmp";
  xfini(kRows, kCols);
  xf_new_file();
  xf_file& f = *xf_ring.file;
  f.name = "/tmp/bench.txt";
  std::vector<xf_text> texts;
  texts.reserve(kLines);
  for (int i = 0; i < kLines; ++i)
    texts.push_back(xf_new_text("line " + std::to_string(i + 1) + " of a file of a million lines, some text to show"));
  xf_do('I', nullptr, -1, kLines, 0, &texts, "bench");
  xf_current_line() = kLines / 2;
}

void cycle() {
  xf_compose();
  xfread(xf_run.work_dir);
  xf_key_step(xf_run.work_dir);
  while (xfcom(xf_run.work_dir)) {
  }
}

// A character typed into the current line and Enter: compose, repaint, take in, run the key.
void BM_typed_character(benchmark::State& state) {
  test_host host(kRows, kCols);
  editor_on(&host);
  for (auto _ : state) {
    xf_cursor_to_line(xf_current_line(), 10);
    host.type("x");
    host.key(13);
    cycle();
  }
  state.counters["us_per_cycle"] =
      benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate |
                                                                      benchmark::Counter::kInvert);
  fs_reset();
  fs_sethost(nullptr);
}
BENCHMARK(BM_typed_character)->Unit(benchmark::kMicrosecond);

// F8 pages forward: compose the new page and repaint it whole.
void BM_page_down(benchmark::State& state) {
  test_host host(kRows, kCols);
  editor_on(&host);
  for (auto _ : state) {
    if (xf_current_line() > kLines - 1000) xf_current_line() = 0;
    host.key(FSK_F1 + 7);
    cycle();
  }
  fs_reset();
  fs_sethost(nullptr);
}
BENCHMARK(BM_page_down)->Unit(benchmark::kMicrosecond);

// Bytes written to a real terminal (ncurses on a pty) when one character of the current line changes.
void BM_terminal_bytes_one_char(benchmark::State& state) {
  term_pty pty(kRows + 1, kCols);
  if (!pty.ok()) {
    state.SkipWithError("no pty");
    return;
  }
  auto host = std::make_unique<term_host>(pty.options());
  editor_on(host.get());
  xf_compose();
  asrefresh();
  host->flush();
  pty.kept();
  double bytes = 0;
  char ch = 'a';
  for (auto _ : state) {
    std::string t(xf_ring.file->line(xf_current_line()));
    t[3] = ch = ch == 'z' ? 'a' : static_cast<char>(ch + 1);
    xf_do('r', xf_new_text(t), xf_current_line(), 1, 0, nullptr, "bench");
    xf_compose();
    asrefresh();
    host->flush();
    bytes += static_cast<double>(pty.kept().size());
  }
  state.counters["bytes_per_change"] = bytes / static_cast<double>(state.iterations());
  fs_reset();
  fs_sethost(nullptr);
}
BENCHMARK(BM_terminal_bytes_one_char)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
