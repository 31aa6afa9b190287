// Slice assignment: x[i] = v, x[i:j] = v, x[i:] = v, x[:j] = v change a part of a variable in place.
#include <algorithm>
#include <cmath>

#include "rexx/rx_exec.h"

namespace {

double index_of(const rx_node* node, const char* which, const rx_node* at) {
  rx_value t;
  const rx_value& v = rx_eval(node, t);
  double d;
  int32_t dec;
  std::string b;
  if (!rx_as_number(v, &d, &dec))
    rx_raise(78, at, std::string("The ") + which + " index evaluates to \"" + std::string(rx_text_of(v, b, at)) + "\".");
  d = rx_round(d, 9);
  if (d < 1 || std::floor(d) != d)
    rx_raise(78, at, std::string("The ") + which + " index must be a positive integer.");
  return d;
}

}  // namespace

void rx_assign_slice(const rx_stmt& s) {
  const rx_node* var = s.target;
  rx_value right = s.expr ? rx_eval_owned(s.expr) : rx_value::string("");
  double i = s.index1 == &rx_open_end ? 1 : index_of(s.index1, "first", var);
  rx_var_ctx c = rx_ctx();
  std::string text;
  if (const rx_value* v = rx_get(c, *var)) {
    std::string b;
    text = rx_text_of(*v, b, var);
  } else {
    text = rx_default_text(c, *var);
  }
  std::string b;
  std::string fill(rx_text_of(right, b, s.expr ? s.expr : var));
  if (fill.empty()) fill = " ";
  double j;
  if (!s.index2)
    j = i + static_cast<double>(fill.size()) - 1;
  else if (s.index2 == &rx_open_end)
    j = static_cast<double>(text.size());
  else
    j = index_of(s.index2, "second", var);
  if (j < i) rx_raise(78, var, "The second index must be greater than the first.");
  rx_check_length(static_cast<std::size_t>(std::min(j, 4e9)), var);
  std::size_t from = static_cast<std::size_t>(i) - 1, to = static_cast<std::size_t>(j);
  if (to > text.size()) text.resize(to, ' ');
  for (std::size_t k = from; k < to; ++k) text[k] = fill[(k - from) % fill.size()];
  rx_assign(c, *var, rx_value::string(text));
}
