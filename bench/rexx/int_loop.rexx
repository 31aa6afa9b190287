/* integer loop: a controlled DO with arithmetic and a comparison in its body */
total = 0
do i = 1 to 3000000
  total = total + i // 7
  if total > 1000000 then total = total - 1000000
end
say total
