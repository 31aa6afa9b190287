select
  otherwise nop
end
