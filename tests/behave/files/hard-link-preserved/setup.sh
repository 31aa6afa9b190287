ln a.txt b.txt
