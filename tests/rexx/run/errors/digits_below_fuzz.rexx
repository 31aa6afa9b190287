numeric fuzz 3
numeric digits 2
