if a then do
  say 1
