# SPDX-License-Identifier: MIT
#
# Doxygen reads the headers through this filter, so that their comments can stay plain. It makes
# marked comments of plain ones, by the rules that the headers follow anyway:
#
# - The comment that opens a file describes the file, and its first class that has none itself.
# - A comment right above a declaration describes it, and the declarations that follow it without
#   a blank line; one at the end of a line describes that line.
# - Default constructors, copies, moves and destructors without a comment need none.
# - Fields, constants, aliases, comparisons, and what gets or sets one thing and is named after it,
#   may go without: the reference shows them with their name alone.
# - What else has no comment is left so, for Doxygen to complain of.
# - A class whose name ends with "Impl" goes to the group of implementations.
#
# Comments inside of functions, and those followed by a blank line, stay as they are. A line stays
# on its line, so that Doxygen's warnings name the right one.

function indent_of(line) {
  match(line, /^ */)
  return substr(line, 1, RLENGTH)
}

function trimmed(text) {
  gsub(/^[ \t]+|[ \t]+$/, "", text)
  return text
}

function is_comment(line) { return line ~ /^ *\/\// }

function comment_text(line) {
  sub(/^ *\/\/ ?/, "", line)
  return marked(line)
}

# A comment's text without what Doxygen would take for a command, except between backquotes, where
# it takes everything as it is.
function marked(text,    parts, count, i, result) {
  count = split(text, parts, "`")
  for (i = 1; i <= count; ++i) {
    if (i % 2 == 1) gsub(/[\\@<>&#%]/, "\\\\&", parts[i])
    result = result (i > 1 ? "`" : "") parts[i]
  }
  if (match(result, /^(Thread safety|Ownership|Null|Locks|Errors)[^:]*:/)) {
    result = "<p><b>" substr(result, 1, RLENGTH) "</b>" substr(result, RLENGTH + 1)
  }
  return result
}

# A text of several lines as a comment on one, before what stands there.
function on_one_line(text) {
  gsub(/\n\n+/, " <p> ", text)
  gsub(/\n/, " ", text)
  return "/** " trimmed(text) " */ "
}

# Where the comment at the end of a line of code begins; 0 without one.
function end_comment(line,    i, c, quoted) {
  for (i = 1; i < length(line); ++i) {
    c = substr(line, i, 1)
    if (c == "\\") ++i
    else if (c == "\"") quoted = !quoted
    else if (!quoted && substr(line, i, 2) == "//") return i
  }
  return 0
}

# What a line adds to the depth of braces and parentheses.
function balance(code,    opened) {
  gsub(/"([^"\\]|\\.)*"/, "", code)
  gsub(/'([^'\\]|\\.)'/, "", code)
  opened = gsub(/[{(]/, "", code)
  return opened - gsub(/[})]/, "", code)
}

function begins_class(code) { return code ~ /^ *(class|struct|enum|union) / && code !~ /;$/ }

function needs_none(code) {
  return code ~ /^ *(virtual )?~/ || code ~ /= delete;/ || code ~ /^ *friend / ||
      code ~ /^ *[A-Za-z]+\(\)( noexcept)?( = default;|;| \{| :)/ ||
      code ~ /operator=\(/ || match_copy(code)
}

# "Thing(const Thing& other)", "Thing(Thing&& other)", of a template as well.
function match_copy(code,    name) {
  name = trimmed(code)
  if (!match(name, /^[A-Za-z_]+\(/)) return 0
  name = substr(name, 1, RLENGTH - 1)
  return index(code, name "(const " name "&") > 0 || index(code, name "(" name "&&") > 0
}

function name_tells(code) {
  code = trimmed(code)
  return code ~ /^[^(]*;$/ || code ~ /operator[=!]=\(/ || code ~ /^template <>/ ||
      code ~ /(^| |[*&])((Get|Is|Has)[A-Z][A-Za-z]*\(\)|[A-Z][A-Za-z]*\(\) const)/ ||
      code ~ /^(inline )?(virtual )?void Set[A-Z][A-Za-z]*\([^,]*\)/
}

# The command that files a class in its group.
function filing(code) {
  return begins_class(code) && code ~ /Impl( final)?( :.*)? \{$/ ? " \\ingroup implementation" : ""
}

# Writes the comment that stands above, for Doxygen, with a command at its end, or as it was.
function flush_block(forDoxygen, command,    i) {
  for (i = 1; i <= blockLines; ++i) {
    if (forDoxygen) sub(/\/\/ ?/, "/// ", block[i])
    print forDoxygen ? indent_of(block[i]) "/// " marked(substr(trimmed(block[i]), 5)) \
                           (i == blockLines ? command : "") : block[i]
  }
  blockLines = 0
}

function block_text(    i, text) {
  for (i = 1; i <= blockLines; ++i) text = text comment_text(block[i]) "\n"
  return text
}

# What goes before the first line of a declaration.
function comment_before(code, next_line, hasEndComment,    command) {
  if (blockLines > 0) {
    group = block_text()
    flush_block(1, filing(code))
    return ""
  }
  if (hasEndComment) return ""
  if (code ~ /^template / && next_line ~ /^[^(]*::[^(]*\(/) return "/** \\cond */ "
  if (begins_class(code) || code ~ /^template / && next_line ~ /^(class|struct) .*[^;]$/) {
    group = ""
    if (opening == "") return ""
    command = filing(code)
    code = on_one_line(opening command)
    opening = ""
    return code
  }
  if (needs_none(code)) return "/** \\cond */ "
  if (group != "") return on_one_line(group)
  return name_tells(code) ? "/** &zwnj; */ " : ""
}

function end_group() {
  flush_block(0)
  if (!open) group = ""
  afterEndComment = 0
}

function code_line(line, next_line,    at, code, comment, prefix, ends) {
  at = end_comment(line)
  code = at ? substr(line, 1, at - 1) : line
  sub(/ +$/, "", code)
  if (!open && code ~ /^ *(public:|protected:|private:|namespace .*{|}.*)$/) {
    end_group()
    print line
    return
  }
  prefix = ""
  if (!open) {
    prefix = comment_before(code, next_line, at > 0)
    open = 1
    depth = body = 0
  }
  comment = at ? (body ? "  // " : "  ///< ") comment_text(substr(line, at)) : ""
  afterEndComment = at && !body
  declarationIndent = length(indent_of(line))
  depth += balance(code)
  if (begins_class(code) && code ~ /{$/) {
    depth = open = 0
    group = ""
  } else {
    body = body || code ~ /{$/
    open = depth > 0 || code !~ /[;,}]$/
  }
  if (prefix ~ /\\cond/) hidden = 1
  ends = hidden && !open ? " /** \\endcond */" : ""
  if (!open) hidden = 0
  print indent_of(code) prefix trimmed(code) ends comment
}

{ lines[NR] = $0 }

END {
  for (i = 1; i <= NR && is_comment(lines[i]); ++i) {
    text = i == 1 ? "\\file" : comment_text(lines[i])
    if (i > 1 && opening text != "") opening = opening text "\n"
    print "/// " text
  }
  for (; i <= NR; ++i) {
    line = lines[i]
    if (line ~ /^ *$/) {
      end_group()
      print line
    } else if (is_comment(line) && afterEndComment &&
               length(indent_of(line)) > declarationIndent) {
      print indent_of(line) "///< " comment_text(line)
    } else if (is_comment(line) && open && body) {
      print line
    } else if (is_comment(line)) {
      block[++blockLines] = line
    } else if (line ~ /^#/) {
      if (line ~ /^#define/ && blockLines > 0) {
        group = block_text()
        flush_block(1)
      } else if (line ~ /^#define/ && group != "") {
        line = on_one_line(group) line
      } else if (line !~ /^#(if|else)/) {
        end_group()
      }
      print line
      while (line ~ /\\$/ && i < NR) print line = lines[++i]
    } else {
      code_line(line, lines[i + 1])
    }
  }
}
