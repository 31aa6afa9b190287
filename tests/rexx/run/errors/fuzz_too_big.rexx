numeric fuzz 9
