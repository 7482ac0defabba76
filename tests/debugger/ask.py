"""For gdb: runs the program to its stop and asks it what its source says. Ends with status 1, and
what was answered instead, where an answer differs. The variable `source` names the source."""

import fnmatch
import re

import gdb

source = gdb.convenience_variable("source").string()
questions = re.findall(r"//\? (.*?): (.*)", open(source).read())

gdb.execute("set print pretty off")
gdb.execute("set breakpoint pending off")
gdb.execute("break Stop")
gdb.execute("run >/dev/null")
gdb.execute("up")

wrong = 0
for question, expected in questions:
    try:
        answer = gdb.execute("print " + question, to_string=True).split(" = ", 1)[1].strip()
    except gdb.error as error:
        answer = str(error)
    pattern = expected.replace("[", "[[]")
    if not fnmatch.fnmatchcase(answer, pattern):
        print("{}\n  gives    {}\n  and not  {}".format(question, answer, expected))
        wrong += 1
print("{} answers, {} of them wrong".format(len(questions), wrong))
gdb.execute("quit {}".format(0 if questions and not wrong else 1))
