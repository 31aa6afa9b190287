// The interpreter's seams to the outside for now: standard output and error, standard input, and a small queue
// in the family state (the queue with buffers replaces these functions later).
#include <cstdio>
#include <deque>

#include "rexx/rx_exec.h"
#include "rexx/rx_state.h"

void rx_output(std::string_view bytes) { std::fwrite(bytes.data(), 1, bytes.size(), stdout); }

void rx_output_flush() { std::fflush(stdout); }

void rx_report_out(std::string_view report) {
  std::fflush(stdout);
  std::fwrite(report.data(), 1, report.size(), stderr);
  std::fflush(stderr);
}

bool rx_read_line(std::string& line) {
  std::fflush(stdout);
  line.clear();
  int c;
  bool any = false;
  while ((c = std::getchar()) != EOF) {
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
void rx_queue_clear() { rx_st.queue.clear(); }
