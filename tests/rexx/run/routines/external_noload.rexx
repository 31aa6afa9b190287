option noload
say 'child gave' ext_child('a b', , 'c')
say 'quoted' ext_child("it's; exit 1", 'x|y')
