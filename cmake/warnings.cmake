# Warnings that g++ and clang++ both know; the tree is clean under them.  CI adds -Werror.
set(MENSURA_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wcast-align -Wcast-qual
                     -Wformat=2 -Wundef)
