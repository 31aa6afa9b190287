do 2.5; end
