# Makes Doxygen read the plain comments of the public headers: a comment before a declaration
# documents it, one behind a member documents that member, and the first of a file documents the
# file.  Every comment begins a line or stands behind code; lines of the preprocessor stay as they
# are.  Indented lines, which show a layout, keep their shape unless they belong to a list.

# What Doxygen would take for markup is text.
function escape(text) {
    gsub(/&/, "\\&amp;", text)
    gsub(/</, "\\&lt;", text)
    gsub(/>/, "\\&gt;", text)
    gsub(/"/, "\\&quot;", text)
    return text
}

# Prints one line of a comment's text.
function put(text,    is_layout) {
    if (text ~ /^ *- /) in_list = 1
    else if (text !~ /^  /) in_list = 0
    is_layout = text ~ /^  / && !in_list
    if (is_layout && !in_layout) print "@verbatim"
    if (!is_layout && in_layout) print "@endverbatim"
    in_layout = is_layout
    # Doxygen drops one star of a line that is no layout.
    print is_layout ? text : " * " escape(text)
}

# Prints a piece of a comment, which may hold its end.
function put_comment(text) {
    in_comment = text !~ /[*]\//
    sub(/ *[*]\/.*/, "", text)
    put(text)
    if (in_comment) return
    in_list = 0
    print (in_layout ? "@endverbatim" : "") "*/"
    in_layout = 0
}

in_comment {
    sub(/^ *[*]/, "")
    if (!/^\//) sub(/^ /, "")
    else $0 = "*" $0
    put_comment($0)
    next
}
/^#/ { print; next }
(at = index($0, "/*")) {
    before = substr($0, 1, at - 1)
    opening = NR == 1 ? "/** @file" : before ~ /[^ ]/ ? "/**<" : "/**"
    print before opening
    put_comment(substr($0, at + 3))
    next
}
{ print }
