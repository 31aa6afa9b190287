/* LEAVE and ITERATE, unnamed and named */
do forever; do; leave; end; say 'not here'; end; say 'out'
do i = 1 to 5; if i // 2 = 0 then iterate; say i; end
do i = 1 to 3
  do j = 1 to 3
    if j = 2 then iterate i
    if i = 3 then leave i
    say i j
  end
end
say 'i is' i
do k = 1 to 2
  do 2
    leave k
  end
end
say 'k is' k
do w in 'p q r'
  if w = 'q' then iterate w
  say w
end
