#!/usr/bin/env bash
# mutate_places_test.sh TOP: the places that are picked to be broken, and what the switches in them do.
. "${0%/*}/../support/common.sh"
export PYTHONPATH=$1/scripts PYTHONDONTWRITEBYTECODE=1

cat >every_kind.c <<'END'
#include <stdio.h>
/* if (comment) { return true; } */
static int sum;
static _Bool is_small(int number) {
    if (number < 0 && sum == 0) {
        return false;
    }
    return number < 3;  // + 1
}
static _Bool both(int a, int b) { return a > 1 && b > 1; }
int main(void) {
    sum = 2;
    sum += 5 + 1;
    printf("%d %s %d %d\n", sum, "if (a == b) + 1", is_small(3), both(0, 2));
    return 0;
}
END
cat >all.py <<'END'
from mutate_places import places
for kind, start, end, new in places(open("every_kind.c").read()):
    print(kind, new)
END
echo "every kind is found, in code only"
same "the places" "negated @ != !!(number < 0 && sum == 0)
and/or @ ? (number < 0 || sum == 0) : (number < 0 && sum == 0)
and/or @ ? (a > 1 || b > 1) : (a > 1 && b > 1)
edge (@ ? number <= 0 : number < 0)
negated (@ != (sum == 0))
edge (@ ? number <= 3 : number < 3)
edge (@ ? a >= 1 : a > 1)
edge (@ ? b >= 1 : b > 1)
no step (@ ? 0 : 1)
true/false @
left out @ ? (void)0 : (void)(sum = 2)
left out @ ? (void)0 : (void)(sum += 5 + 1)
left out @ ? (void)0 : (void)(printf(\"%d %s %d %d\\n\", sum, \"if (a == b) + 1\", is_small(3), both(0, 2)))" "$(python3 all.py)"

cat >pick.py <<'END'
import sys
from mutate_places import pick
text = open("every_kind.c").read()
for place in pick({"conn/a.c": text, "sql/b.c": text * 4, "sql/c.c": text * 5}, 20, int(sys.argv[1])):
    print(place["number"], place["file"], place["line"], place["kind"])
END
echo "the seed says which are picked: as many as asked for, from every folder, more from the larger"
first=$(python3 pick.py 1)
same "the same seed" "$first" "$(python3 pick.py 1)"
[ "$first" != "$(python3 pick.py 2)" ] || fail "two seeds pick the same"
same "the folders" "5 conn
15 sql" "$(cut -d' ' -f2 <<<"$first" | cut -d/ -f1 | sort | uniq -c | sed 's/^ *//')"

# Of places that lie in each other, one.
cat >switches.py <<'END'
from mutate import HEADER
from mutate_places import broken, places
open("switch.h", "w").write(HEADER.replace("PLACES", "13"))
text = open("every_kind.c").read()
chosen = [{"number": number, "start": start, "end": end, "new": new}
          for number, (kind, start, end, new) in enumerate(places(text), 1) if number not in (1, 4, 5, 7, 8, 12)]
open("switched.c", "w").write(broken(text, chosen, "switch.h"))
END
python3 switches.py
cc -Wall -Wextra -Werror -o switched switched.c
echo "each switch breaks its place, and is off without the variable"
well="8 if (a == b) + 1 0 0"
same "with nothing broken" "$well" "$(./switched)"
same "an edge moved" "8 if (a == b) + 1 1 0" "$(ZMFB_MUTANT=6 ./switched)"
same "and/or" "8 if (a == b) + 1 0 1" "$(ZMFB_MUTANT=3 ./switched)"
same "no step" "7 if (a == b) + 1 0 0" "$(ZMFB_MUTANT=9 ./switched)"
same "a statement left out" "" "$(ZMFB_MUTANT=13 ./switched)"

echo "what was reached is noted with the test that reached it"
mkdir reached
same "with notes taken" "$well" "$(ZMFB_REACHED=reached ZMFB_TEST_CASE=A.B ./switched)"
same "the notes" "11@A.B 13@A.B 2@A.B 3@A.B 6@A.B 9@A.B" "$(ls reached | LC_ALL=C sort | paste -sd ' ')"
