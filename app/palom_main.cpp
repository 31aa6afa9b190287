// palom: the stand-alone REXX runner: loads a program, runs it with its arguments, exits with its return code.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "os/os_process.h"
#include "rexx/paloma.h"

namespace {

const char usage[] =
    "usage: palom [-dump-tree | -dump-tokens] FILE [ARGS...]\n"
    "  Runs the REXX program FILE; ARGS, joined by blanks, are its one argument (when palom_NB_ARGS is set,\n"
    "  the arguments are palom_ARG0... instead, as hexadecimal text).\n"
    "  -dump-tree    print the parsed program tree (one statement a line) instead of running it\n"
    "  -dump-tokens  print the lexer's finished tokens instead of running it\n"
    "Exit status: the program's EXIT code modulo 256 (0 at its end); the error number of a syntax or run-time\n"
    "error; 253 when the program uses something not available yet; 252 when memory runs out; 254 for a lexical\n"
    "error; 255 when FILE cannot be read.\n";

void write_out(std::FILE* f, const std::string& s) { std::fwrite(s.data(), 1, s.size(), f); }

// Bytes of hexadecimal text, two digits a byte; a stray digit at the end is dropped.
std::string from_hex(const char* hex) {
  auto digit = [](char c) { return c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10; };
  std::string out;
  for (std::size_t i = 0; hex[i] && hex[i + 1]; i += 2)
    out += static_cast<char>(digit(hex[i]) * 16 + digit(hex[i + 1]));
  return out;
}

}  // namespace

int main(int argc, char** argv) {
  int arg = 1;
  bool dump_tree = false, dump_tokens = false;
  for (; arg < argc && argv[arg][0] == '-' && argv[arg][1] != '\0'; ++arg) {
    if (std::strcmp(argv[arg], "-dump-tree") == 0) {
      dump_tree = true;
    } else if (std::strcmp(argv[arg], "-dump-tokens") == 0) {
      dump_tokens = true;
    } else {
      std::fprintf(stderr, "palom: unknown option \"%s\"\n%s", argv[arg], usage);
      return 1;
    }
  }
  if (arg >= argc) {
    std::fputs(usage, stderr);
    return 1;
  }
  std::string path = argv[arg];
  paloma_init();
  paloma_load loaded = paloma_load_file(path);
  if (loaded.rc != 0) {
    write_out(stderr, loaded.message);
    return loaded.rc & 0xFF;  // exit status is the run's code modulo 256
  }
  if (dump_tokens) write_out(stdout, paloma_dump_tokens(*loaded.program));
  if (dump_tree) write_out(stdout, paloma_dump_tree(*loaded.program));
  if (dump_tokens || dump_tree) return 0;

  // A parent run (an external routine under OPTION NOLOAD) passes the arguments in palom_NB_ARGS and
  // palom_ARG0... as hexadecimal text. Otherwise the words behind FILE are one argument, as a shell user typed
  // them; none gives no argument.
  std::vector<std::string> args;
  if (const char* nb = std::getenv("palom_NB_ARGS")) {
    long n = std::strtol(nb, nullptr, 10);
    for (long i = 0; i < n && i < 10000; ++i) {
      const char* hex = std::getenv(("palom_ARG" + std::to_string(i)).c_str());
      args.push_back(hex ? from_hex(hex) : std::string());
    }
    os_unset_env("palom_NB_ARGS");
  } else if (arg + 1 < argc) {
    std::string joined;
    for (int i = arg + 1; i < argc; ++i) {
      if (i > arg + 1) joined += ' ';
      joined += argv[i];
    }
    args.push_back(joined);
  }
  paloma_outcome out = paloma_run(*loaded.program, args, paloma_source_text(path));
  return out.rc & 0xFF;
}
