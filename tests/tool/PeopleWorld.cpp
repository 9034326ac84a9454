// Who is in the roster of these tests.
#include "tool/PeopleWorld.h"

namespace test {

void PeopleWorld::SetUp()
{
    const std::string people = cardOf("N:Lima;Ana;;;\nNICKNAME:Nia\nEMAIL;TYPE=HOME:ana@home.example\n"
                                      "EMAIL;TYPE=WORK:lima@works.example\nTEL;TYPE=HOME:+49 (0)30 12-34 56\n"
                                      "BDAY:1970-05-01\nADR;TYPE=HOME:;;Rua 1;Porto;;4000;Portugal")
        + cardOf("N:Ek;Ben;;;\nEMAIL;TYPE=WORK:anaesthesia@ek.example\nNOTE:Met Ana in Porto")
        + cardOf("N:Dubois;Chloé;;;\nEMAIL;TYPE=WORK:chloe@dubois.example\nTITLE:Banana seller")
        + cardOf("N:Analund;Dan;;;\nEMAIL;TYPE=HOME:dan@analund.example")
        + cardOf("N:;;;;\nORG:Anvil Works\nX-ZRShowAs:COMPANY\nTEL;TYPE=WORK:555 0199");
    done("import " + world.write("people.vcf", people));
}

} // namespace test
