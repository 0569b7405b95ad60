#!/bin/sh
# Doxygen's filter: turns a header's plain comments into documenting ones. The first comment is the file's, one behind a
# declaration belongs to it, an indented piece is code; what else looks like markup is text.
exec sed -E -e '1s#^// #/// \\file\n/// #' -e 's#^( *)//   +#\1///     #' -e 's#^( *)//( |$)#\1///\2#' \
    -e 's#([;,{)]) +// #\1 ///< #' -e '/\/\/\/</s/\\n/\\\\n/g' -e '/^ *\/\/\/ /{
    /^ *\/\/\/ \\file/b
    /^ *\/\/\/ {5}/b
    s/\\/\\\\/g
    s/([@<>#%&])/\\\1/g
}' "$1"
