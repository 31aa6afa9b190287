select
  when a = 1 then say 'one'
  when a = 2 then
    say 'two'
  otherwise
    say 'many'
    say 'more'
end
select; when a then nop; end
select
  when b then do
    say 'b'
  end
  otherwise nop
end
if x then select
  when y then nop
end
