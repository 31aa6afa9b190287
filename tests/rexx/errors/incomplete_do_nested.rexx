do i = 1 to 3
  do j = 1 to 2
    say i j
  end
