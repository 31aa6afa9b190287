# A bare name not in the working directory is found along XPATH, and saved where it was found.
XPATH="$PWD/nowhere:$PWD/lib" "$TOLVA" -batch p.txt -c "input x" -c save
