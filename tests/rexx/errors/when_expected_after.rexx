select
  when a then nop
  say 1
end
