exit 3.5
