"""For gdb: runs the program to its stop, asks it what its source says, and looks whether each type
that the natvis file names exists in the program, and each name in its expressions, which may be a
field there, a type, or a variable of the file's own. Ends with status 1, and what is wrong, where
anything is. The variables `source` and `natvis` name the files."""

import fnmatch
import re
import xml.etree.ElementTree

import gdb

PREFIX = "{http://schemas.microsoft.com/vstudio/debugger/natvis/2010}"
WORDS = {"char", "int", "unsigned", "void", "size_t", "s", "sb"}
complaints = []


def ask(question, expected):
    try:
        answer = gdb.execute("print " + question, to_string=True).split(" = ", 1)[1].strip()
    except gdb.error as error:
        answer = str(error)
    if not fnmatch.fnmatchcase(answer, expected.replace("[", "[[]")):
        complaints.append("{}\n  gives    {}\n  and not  {}".format(question, answer, expected))


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
    """Every expression below an entry of the natvis file."""
    for node in entry.iter():
        tag = node.tag.removeprefix(PREFIX)
        yield from (node.attrib[name] for name in ("Condition", "InitialValue")
                    if name in node.attrib)
        if tag == "DisplayString":
            yield from re.findall(r"\{([^}]*)\}", node.text)
        elif tag not in ("Type", "AlternativeType", "Expand", "Variable", "Break") and node.text:
            yield node.text


def check(entry, name):
    """The names in the expressions of an entry, taken for those of one type."""
    try:
        known = fields_of(gdb.lookup_type(name.replace("<*>", "<31>"))) | WORDS
    except gdb.error:
        complaints.append("there is no type " + name)
        return 0
    known |= {node.attrib["Name"] for node in entry.iter(PREFIX + "Variable")}
    words = [word for expression in expressions(entry)
             for word in re.findall(r"[A-Za-z_][\w:]*", expression)]
    for word in words:
        try:
            known |= set() if word in known else fields_of(gdb.lookup_type(word))
        except gdb.error:
            complaints.append("{}: there is no {}".format(name, word))
    return len(words)


gdb.execute("set print pretty off")
gdb.execute("set breakpoint pending off")
gdb.execute("break Stop")
gdb.execute("run >/dev/null")
gdb.execute("up")
source = open(gdb.convenience_variable("source").string()).read()
questions = re.findall(r"//\? (.*?): (.*)", source)
for question in questions:
    ask(*question)
natvis = xml.etree.ElementTree.parse(gdb.convenience_variable("natvis").string())
names = sum(check(entry, alias.attrib["Name"]) for entry in natvis.iter(PREFIX + "Type")
            for alias in [entry] + entry.findall(PREFIX + "AlternativeType"))
print("\n".join(complaints))
print("{} answers and {} names, {} of them wrong".format(len(questions), names, len(complaints)))
gdb.execute("quit {}".format(0 if questions and names and not complaints else 1))
