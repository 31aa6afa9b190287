do 3; end i
