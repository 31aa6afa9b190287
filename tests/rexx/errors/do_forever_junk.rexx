do forever x
end
