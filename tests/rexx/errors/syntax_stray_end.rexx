say 1
end
