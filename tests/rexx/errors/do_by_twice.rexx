do i = 1 by 1 to 3 by 2; end
