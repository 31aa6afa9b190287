do i = 1 to 3
end j
