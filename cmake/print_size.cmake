file(SIZE ${FILE} size)
cmake_path(GET FILE FILENAME name)
message("${name}: ${size} bytes")
