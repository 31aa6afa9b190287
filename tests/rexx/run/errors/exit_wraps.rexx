exit 300
