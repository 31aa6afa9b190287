// The interpreter's seams to the outside: standard output and error, standard input, and the queue with the
// buffers that MAKEBUF stacks inside it.
#include <cstdio>
#include <deque>

#include "rexx/rx_exec.h"
#include "rexx/rx_state.h"

namespace {
// The host's hook, called before the terminal is written to or read from.
void (*terminal_hook)() = nullptr;
void before_terminal() {
  if (terminal_hook) terminal_hook();
}
}  // namespace

void rx_set_terminal_hook(void (*hook)()) { terminal_hook = hook; }

void rx_output(std::string_view bytes) {
  before_terminal();
  std::fwrite(bytes.data(), 1, bytes.size(), stdout);
}

void rx_output_flush() { std::fflush(stdout); }

void rx_report_out(std::string_view report) {
  before_terminal();
  std::fflush(stdout);
  std::fwrite(report.data(), 1, report.size(), stderr);
  std::fflush(stderr);
}

bool rx_read_line(std::string& line) {
  before_terminal();
  std::fflush(stdout);
  line.clear();
  int c;
  bool any = false;
  // One lock for the line, not one per byte.
  flockfile(stdin);
  struct unlock {
    ~unlock() { funlockfile(stdin); }
  } at_end;
  while ((c = getc_unlocked(stdin)) != EOF) {
    any = true;
    if (c == '\n') return true;
    line.push_back(static_cast<char>(c));
  }
  return any;
}

void rx_queue_push(std::string line) { rx_st.queue.push_front(std::move(line)); }
void rx_queue_add(std::string line) { rx_st.queue.push_back(std::move(line)); }
bool rx_queue_pull(std::string& line) {
  if (rx_st.queue.empty()) return false;
  line = std::move(rx_st.queue.front());
  rx_st.queue.pop_front();
  return true;
}
std::size_t rx_queue_size() { return rx_st.queue.size(); }
void rx_queue_clear() {
  rx_st.queue.clear();
  rx_st.buffers.clear();
}

namespace {

// DROPBUF [n]: back to depth n - 1, or one buffer down without n. RC 1 for an n that is no number, 2 for a depth
// that cannot be reached (no buffer at all included).
int32_t drop_buffers(std::string_view rest) {
  while (!rest.empty() && rest.front() == ' ') rest.remove_prefix(1);
  while (!rest.empty() && rest.back() == ' ') rest.remove_suffix(1);
  auto depth = static_cast<long long>(rx_st.buffers.size());
  long long target = depth - 1;
  if (!rest.empty()) {
    double n = 0;
    int32_t dec = 0;
    if (!rx_is_number(rest, &n, &dec) || !rx_is_whole(n)) return 1;
    target = static_cast<long long>(n) - 1;
  }
  if (target < 0 || target >= depth) return 2;
  while (static_cast<long long>(rx_st.buffers.size()) > target) {
    rx_st.queue = std::move(rx_st.buffers.back());
    rx_st.buffers.pop_back();
  }
  return 0;
}

}  // namespace

bool rx_queue_command(std::string_view word, std::string_view rest, int32_t* rc) {
  if (word == "makebuf") {
    rx_st.buffers.push_back(std::move(rx_st.queue));
    rx_st.queue.clear();
    *rc = static_cast<int32_t>(rx_st.buffers.size());
  } else if (word == "dropbuf") {
    *rc = drop_buffers(rest);
  } else if (word == "desbuf") {
    rx_st.queue.clear();
    *rc = 0;
  } else if (word == "sentries") {
    *rc = static_cast<int32_t>(rx_st.queue.size());
  } else {
    return false;
  }
  return true;
}
