do unset9; end
