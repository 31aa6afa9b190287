select; say 1; end
