do
  select
    when a then nop
