call nosuch 1
