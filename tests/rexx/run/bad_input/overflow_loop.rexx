x = 1; do forever; x = x * 1e10; end
