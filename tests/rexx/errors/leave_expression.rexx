do forever
  leave a b
end
