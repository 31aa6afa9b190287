address nosuch
