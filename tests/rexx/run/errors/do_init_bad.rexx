do i = 'a' to 3; end
