"""For gdb: whether each type that the natvis file names exists in the program, and in its
expressions no name that is neither a field there, a type, nor a variable of the file's own. Ends
with status 1 where one doesn't. The variable `natvis` names the file."""

import re
import xml.etree.ElementTree

import gdb

PREFIX = "{http://schemas.microsoft.com/vstudio/debugger/natvis/2010}"
WORDS = {"char", "int", "unsigned", "void", "size_t", "s", "sb"}
root = xml.etree.ElementTree.parse(gdb.convenience_variable("natvis").string()).getroot()
complaints = []


def fields_of(kind):
    """Of the type, its bases, and of the records that its pointers lead to."""
    kind = kind.strip_typedefs()
    if kind.code not in (gdb.TYPE_CODE_STRUCT, gdb.TYPE_CODE_UNION):
        return set()
    names = set()
    for field in kind.fields():
        names.add(field.name)
        target = field.type.strip_typedefs()
        if field.is_base_class:
            names |= fields_of(target)
        elif target.code == gdb.TYPE_CODE_PTR and target.target().code == gdb.TYPE_CODE_STRUCT:
            names |= {inner.name for inner in target.target().fields()}
    return names


def expressions(entry):
    """Every expression below an entry of the file."""
    for node in entry.iter():
        tag = node.tag.removeprefix(PREFIX)
        yield from (node.attrib[name] for name in ("Condition", "InitialValue")
                    if name in node.attrib)
        if tag == "DisplayString":
            yield from re.findall(r"\{([^}]*)\}", node.text)
        elif tag not in ("Type", "AlternativeType", "Expand", "Variable", "Break") and node.text:
            yield node.text


def check(entry, name):
    try:
        kind = gdb.lookup_type(name.replace("<*>", "<31>"))
    except gdb.error:
        complaints.append("there is no type " + name)
        return 0
    known = fields_of(kind) | WORDS | {
        node.attrib["Name"] for node in entry.iter(PREFIX + "Variable")}
    count = 0
    for expression in expressions(entry):
        for word in re.findall(r"[A-Za-z_][\w:]*", expression):
            count += 1
            if word in known:
                continue
            try:
                known |= fields_of(gdb.lookup_type(word))
            except gdb.error:
                complaints.append("{}: {} in {}".format(name, word, expression.strip()))
    return count


gdb.execute("break Stop")
gdb.execute("run >/dev/null")
checked = 0
for entry in root.iter(PREFIX + "Type"):
    names = [entry] + entry.findall(PREFIX + "AlternativeType")
    checked += sum(check(entry, alias.attrib["Name"]) for alias in names)
print("\n".join(complaints))
print("{} names, {} of them unknown".format(checked, len(complaints)))
gdb.execute("quit {}".format(0 if checked and not complaints else 1))
