#!/usr/bin/env palom
say "first"
  # a comment at the start of a clause
say a #b
