do i = 1 to 3; i = 'x'; end
