# SPDX-License-Identifier: MIT
#
# Leaves of abidw's text what was promised. Reads three files: promised-layout.txt, the promised
# names as the linker knows them, and abidw's text.
#
# - Of functions and data, those with a promised name, and virtual functions in a promised slot.
# - Of a class of ours, the promised fields. Its size, unless the list has none: then programs do
#   not make such objects, and fields may be added behind the promised ones.
# - Of a class of ours that the list does not have, the name alone.
#
# Types of other libraries stay as they are.
function attribute(name,   rest) {
  if (!match($0, " " name "='[^']*'")) return ""
  rest = substr($0, RSTART + length(name) + 3, RLENGTH - length(name) - 4)
  gsub(/&lt;/, "<", rest); gsub(/&gt;/, ">", rest); gsub(/&amp;/, "\\&", rest)
  return rest
}
function within(   i, text) {
  for (i = 1; i <= depth; ++i) text = text (i > 1 ? "::" : "") names[i]
  return text
}
function is_ours(class) { return class ~ /^KE(Lib)?::/ }
function is_promised_symbol(   symbol) {
  symbol = attribute("elf-symbol-id")
  sub(/@.*/, "", symbol)
  return symbol in symbols
}
# Keeps back the lines of an element until it is known whether it is promised.
function begin_block(tag) {
  block = $0
  blockEnd = "</" tag ">"
  promised = 0
}
function end_block() {
  if (promised) print block
  blockEnd = ""
}

FNR == 1 { ++file }

file == 1 && match($0, /: (size|base|field|slot) +[0-9]+/) {
  class = substr($0, 1, RSTART - 1)
  split(substr($0, RSTART + 2, RLENGTH - 2), fact, / +/)
  sized[class] += fact[1] == "size"
  if (fact[1] == "slot") slots[class, fact[2]] = 1
  if (fact[1] == "field") fields[class, substr($0, RSTART + RLENGTH + 1)] = 1
}
file < 3 {
  if (file == 2) symbols[$1] = 1
  next
}

blockEnd == "" && /<(data-member|member-function|function-decl) / {
  match($0, /[a-z]+-[a-z]+/)
  begin_block(substr($0, RSTART, RLENGTH))
  slot = attribute("vtable-offset")
  self = within()
  if (/<function-decl /) promised = is_promised_symbol()
  else if (slot != "") promised = !is_ours(self) || ((self, slot) in slots)
  else promised = !is_ours(self)
  if (/\/>$/) end_block()
  next
}
blockEnd != "" {
  block = block "\n" $0
  if (/<function-decl / || /<var-decl / && /elf-symbol-id=/) promised = promised || is_promised_symbol()
  else if (/<var-decl /) promised = promised || ((self, attribute("name")) in fields)
  if (index($0, blockEnd)) end_block()
  next
}
/<elf-symbol / {
  if (attribute("name") in symbols) print
  next
}
/<var-decl / {
  if (is_promised_symbol()) print
  next
}
/<namespace-decl / { names[++depth] = attribute("name") }
/<\/namespace-decl>/ { --depth }
/<class-decl / && !/\/>/ {
  names[++depth] = attribute("name")
  self = within()
  if (is_ours(self) && !(self in sized && sized[self])) sub(/size-in-bits='[0-9]*'/, "size-in-bits='0'")
}
/<\/class-decl>/ { --depth }
/<base-class / && is_ours(within()) && !(within() in sized) { next }
{ print }
