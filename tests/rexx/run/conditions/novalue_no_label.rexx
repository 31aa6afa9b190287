signal on novalue
say 123 a.123
say missing
