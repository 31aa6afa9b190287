do i = 1 to 3 while 'y'; end
