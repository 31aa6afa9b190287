/* a stem with 200,000 tails: filled, then read back twice */
do i = 1 to 200000
  a.i = i * 2
end
sum = 0
do j = 1 to 2
  do i = 1 to 200000
    sum = sum + a.i
  end
end
say sum
