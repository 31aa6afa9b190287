do i = 1 to 3 to 4
end
