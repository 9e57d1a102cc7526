# SPDX-License-Identifier: MIT
#
# From abidw's text, read twice: a line for each class of ours,
#   NAME size=BYTES [bases=NAME@OFFSET,...] [fields=NAME@OFFSET,...] [slots=NAME@SLOT,...]
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
function add(list, item) { return list (list == "" ? "" : ",") item }
function part(name, list) { return list == "" ? "" : " " name "=" list }

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
    size[depth] = attribute("size-in-bits") / 8
    bases[depth] = fields[depth] = slots[depth] = ""
  }
}
/<base-class / {
  bases[depth] = add(bases[depth], known[attribute("type-id")] "@" attribute("layout-offset-in-bits") / 8)
}
/<data-member / { offset = attribute("layout-offset-in-bits") }
/<var-decl / && offset != "" {
  fields[depth] = add(fields[depth], attribute("name") "@" offset / 8)
  offset = ""
}
/<member-function / { slot = attribute("vtable-offset") }
/<function-decl / && slot != "" {
  if (slot >= 0) slots[depth] = add(slots[depth], attribute("name") "@" slot)
  slot = ""
}
/<\/class-decl>/ {
  name = within()
  sub(/::$/, "", name)
  if (pass == 2 && name ~ /^KE(Lib)?::/ && !declared[depth]) {
    print name " size=" size[depth] part("bases", bases[depth]) part("fields", fields[depth]) \
      part("slots", slots[depth])
  }
  --depth
}
