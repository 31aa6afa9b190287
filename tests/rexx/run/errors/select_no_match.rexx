x = 3
select
  when x = 1 then say 'one'
  when x = 2 then say 'two'
end
