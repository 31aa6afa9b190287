// ISPF COPY, CREATE and REPLACE: the command forms, the parked requests and their completion.
#include "editor/pdfcopy.h"

#include <algorithm>
#include <string>
#include <vector>

#include "editor/command.h"
#include "editor/handlers.h"
#include "editor/linecmds.h"
#include "editor/messages.h"
#include "editor/operands.h"
#include "editor/ring.h"
#include "editor/state.h"
#include "os/os_file.h"

namespace {

int fail(int msg, int code) {
  xf_msg(msg, XF_MSG_ERROR);
  rc = code;
  return 1;
}

bool writable() {
  if (!xf_ring.file) return false;
  if (!xf_ring.file->read_write) {
    fail(118, 1);
    return false;
  }
  return true;
}

// The forms without a file name ask for it on a panel, which the dialog toolkit will give.
int needs_panel() { return fail(164, 1); }

bool is_whole(const std::string& w, int32_t& v) { return xf_parse_count(w, v) && v >= 1; }

// The words of a COPY: file, an optional `after`/`before` label, an optional range of the file's lines.
struct copy_form {
  std::string file;
  std::string where;  // "after" or "before", empty without a label
  std::string label;
  int32_t first = 1, last = -1;
};

// Splits the operands of COPY; false after its message and rc.
bool parse_copy(const std::vector<std::string>& all, copy_form& f, bool& panel) {
  std::vector<std::string> w = all;
  int32_t a = 0, b = 0;
  if (w.size() >= 3 && is_whole(w[w.size() - 2], a) && is_whole(w[w.size() - 1], b)) {
    if (a > b) return fail(179, 1) == 0;
    f.first = a;
    f.last = b;
    w.resize(w.size() - 2);
  }
  panel = w.empty() || w.size() == 2;
  if (w.size() > 3) return fail(16, 5) == 0;
  std::size_t at = w.size() == 3 ? 1 : 0;
  if (w.size() >= 2) {
    std::string k = xf_lower(w[at]);
    if (k != "after" && k != "before") return fail(16, 5) == 0;
    f.where = k;
    f.label = w[at + 1];
  }
  if (w.size() == 1 || w.size() == 3) f.file = w[0];
  return true;
}

// Reads the COPY's file and cuts it to the range; false after the message and rc.
bool copy_source(const xf_pdf_request& r, std::vector<std::string>& lines) {
  if (!xf_read_lines(r.file, lines)) return false;
  int32_t n = static_cast<int32_t>(lines.size());
  if (r.first > n || r.last > n) return fail(179, 1) == 0;
  int32_t last = r.last < 0 ? n : r.last;
  lines.erase(lines.begin() + last, lines.end());
  lines.erase(lines.begin(), lines.begin() + (r.first - 1));
  return true;
}

bool file_path(const std::string& word, std::string& path) {
  if (!xf_file_operand(word, path)) return fail(16, 5) == 0;
  return true;
}

int pdf_copy(const xf_cmd_call& c) {
  if (!writable()) return 1;
  copy_form form;
  bool panel = false;
  if (!parse_copy(xf_tokens(xf_trim(xf_operands(c.text))), form, panel)) return 1;
  int32_t label_line = -1;
  if (!form.label.empty()) {
    label_line = xf_label_line(form.label);
    if (label_line < 0) return fail(178, 1);
  }
  if (panel) return needs_panel();
  xf_file& f = *xf_ring.file;
  xf_pdf_request req;
  req.active = true;
  req.first = form.first;
  req.last = form.last;
  if (!file_path(form.file, req.file)) return 1;
  std::vector<std::string> lines;
  if (!copy_source(req, lines)) return 1;
  if (form.label.empty()) {
    if (f.size > 0) {
      f.pdf_copy = std::move(req);
      xf_msg(177, XF_MSG_INFO);
      return 1;
    }
    xf_insert_read_lines(-1, lines);
    return 1;
  }
  xf_insert_read_lines(form.where == "before" ? label_line - 1 : label_line, lines);
  return 1;
}

// CREATE and REPLACE: `file [.a .b]`; without the labels the prefix area names the lines.
int pdf_create(const xf_cmd_call& c, bool replace) {
  if (!xf_ring.file) return 1;
  std::vector<std::string> w = xf_tokens(xf_trim(xf_operands(c.text)));
  std::vector<int32_t> labels;
  while (!w.empty() && w.back().size() > 1 && w.back()[0] == '.') {
    int32_t l = xf_label_line(w.back());
    if (l < 0) return fail(178, 1);
    labels.insert(labels.begin(), l);
    w.pop_back();
  }
  if (!labels.empty() && labels.size() != 2) return fail(179, 1);
  if (w.size() > 1) return fail(16, 5);
  if (w.empty()) return needs_panel();
  xf_pdf_request req;
  req.active = true;
  req.replace = replace;
  if (!file_path(w[0], req.file)) return 1;
  if (!replace && os_file_kind(req.file) != os_kind::none) return fail(182, 1);
  xf_file& f = *xf_ring.file;
  if (labels.empty()) {
    if (f.size > 0) {
      f.pdf_create = std::move(req);
      xf_msg(replace ? 185 : 183, XF_MSG_INFO);
      return 1;
    }
    xf_write_lines(req.file, {});
    return 1;
  }
  std::vector<int32_t> lines;
  int32_t first = std::min(labels[0], labels[1]), last = std::max(labels[0], labels[1]);
  for (int32_t l = std::max(first, 0); l <= last && l < f.size; ++l) lines.push_back(l);
  xf_write_lines(req.file, lines);
  return 1;
}

}  // namespace

bool xf_pdf_copy_complete(int32_t line, bool before) {
  if (!xf_ring.file || !xf_ring.file->pdf_copy.active) return false;
  xf_pdf_request req = std::move(xf_ring.file->pdf_copy);
  xf_ring.file->pdf_copy = {};
  if (!writable()) return false;
  std::vector<std::string> lines;
  if (!copy_source(req, lines)) return false;
  int32_t at = before ? line - 1 : line;
  if (at < -1) at = -1;
  xf_insert_read_lines(std::min(at, xf_ring.file->size - 1), lines);
  return true;
}

bool xf_pdf_create_complete(int32_t first, int32_t last, bool move) {
  if (!xf_ring.file || !xf_ring.file->pdf_create.active) return false;
  xf_file& f = *xf_ring.file;
  xf_pdf_request req = std::move(f.pdf_create);
  f.pdf_create = {};
  if (!req.replace && os_file_kind(req.file) != os_kind::none) return fail(182, 1) == 0;
  if (move && !writable()) return false;
  std::vector<int32_t> lines;
  for (int32_t l = std::max(first, 0); l <= last && l < f.size; ++l) lines.push_back(l);
  if (!xf_write_lines(req.file, lines)) return false;
  if (move && !lines.empty()) xfdel(lines.front(), static_cast<int32_t>(lines.size()));
  return true;
}

int xfcm_pdfcopy(const xf_cmd_call& c) { return pdf_copy(c); }

int xfcm_create(const xf_cmd_call& c) { return pdf_create(c, false); }

int xfcm_pdfreplace(const xf_cmd_call& c) { return pdf_create(c, true); }
