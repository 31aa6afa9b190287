/* SELECT, and LEAVE or EXIT from inside nested blocks */
do i = 1 to 5
  select
    when i = 1 then say 'one'
    when i = 2 then nop
    when i = 4 then leave
    otherwise say 'other' i
  end
end
say 'left at' i
do j = 1 to 3
  if j = 2 then do
    interpret 'leave j'
  end
  say 'j' j
end
do k = 1 to 3
  do forever
    if k = 2 then exit k * 10
    leave
  end
  say 'k' k
end
