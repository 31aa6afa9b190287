do i = 1 for 2 for 3; end
