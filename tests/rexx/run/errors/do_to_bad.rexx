do i = 1 to 'a'; end
