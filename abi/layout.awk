# SPDX-License-Identifier: MIT
#
# From abidw's text, read twice, one line for each fact about a class of ours:
#   CLASS: size BYTES
#   CLASS: base OFFSET NAME
#   CLASS: field OFFSET NAME
#   CLASS: slot NUMBER MANGLED-NAME
# Offsets are in bytes. Virtual destructors take the slots that are left out.
function attribute(name,   rest) {
  if (!match($0, " " name "='[^']*'")) return ""
  rest = substr($0, RSTART + length(name) + 3, RLENGTH - length(name) - 4)
  gsub(/&lt;/, "<", rest); gsub(/&gt;/, ">", rest); gsub(/&amp;/, "\\&", rest)
  return rest
}
function within(   i, text) {
  for (i = 1; i <= depth; ++i) text = text names[i] "::"
  return text
}
function fact(kind, number, name,   self) {
  self = within()
  sub(/::$/, "", self)
  if (pass == 2 && self ~ /^KE(Lib)?::/ && !declared[depth]) {
    printf "%s: %s %3d%s\n", self, kind, number, name == "" ? "" : " " name
  }
}

FNR == 1 { ++pass; depth = 0 }
/<namespace-decl / { names[++depth] = attribute("name") }
/<\/namespace-decl>/ { --depth }
/<class-decl / {
  self = within() attribute("name")
  id = attribute("id")
  if (id != "") known[id] = self
  if ($0 !~ /\/>/) {
    names[++depth] = attribute("name")
    declared[depth] = /is-declaration-only='yes'/
    if (attribute("size-in-bits") > 0) fact("size", attribute("size-in-bits") / 8)
  }
}
/<\/class-decl>/ { --depth }
/<base-class / { fact("base", attribute("layout-offset-in-bits") / 8, known[attribute("type-id")]) }
/<data-member / { offset = attribute("layout-offset-in-bits") }
/<var-decl / && offset != "" {
  fact("field", offset / 8, attribute("name"))
  offset = ""
}
/<member-function / { slot = attribute("vtable-offset") }
/<function-decl / && slot != "" {
  if (slot >= 0) fact("slot", slot, attribute("mangled-name"))
  slot = ""
}
