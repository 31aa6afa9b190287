say unset8 + 1
