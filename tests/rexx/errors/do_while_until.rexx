do i = 1 to 3 while a until b
end
