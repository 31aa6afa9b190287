do until 2; end
