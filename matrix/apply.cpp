#include <vector>

#include "conn/raise.h"
#include "host/number.h"
#include "host/text.h"
#include "matrix/application.h"
#include "matrix/decide.h"
#include "matrix/methods.h"
#include "matrix/read.h"

namespace zmfb::matrix {
namespace {

using host::operator""_l1;

constexpr std::string_view empty_matrix = "Você deseja que eu processe uma matriz vazia?"_l1;
constexpr std::string_view foreign_table = "Impossível modificar tabelas alienígenas!!;Tabela: "_l1;

void drop_table(Application& run, const Value& table) {
    if (!ask(run.self, "iszmrddtable", table)) return run.log("[WARN] Table already dropped");
    run.log_change(run.change("droptable", table), "[OK] Table dropped", "[ERROR] Dropping table");
}

void change_field(Application& run, const Group& group, Action action, std::size_t line) {
    const Value &left = group.lefts[line], &right = group.rights[line];
    switch (action) {
        case Action::none:
            break;
        case Action::add:
            run.log_change(run.change("addfield", group.table, right), Value("[OK] Added Field: ") + right[1],
                           Value("[ERROR] Add Field: ") + right[1]);
            break;
        case Action::alter:
            run.log_change(run.change("alterfield", group.table, right, left),
                           Value("[OK] Alter Field: ") + left[1], Value("[ERROR] Alter Field: ") + left[1]);
            break;
        case Action::drop:
            run.log_change(run.change("dropfield", group.table, left), Value("[OK] Drop Field: ") + left[1],
                           Value("[ERROR] Drop Field: ") + left[1]);
            break;
        case Action::already_dropped:
            run.log(Value("[WARN] Field already dropped: ") + left[1]);
            break;
    }
}

// Fields of the table that no line names.
void set_aside(Application& run, const Group& group, const Value& current) {
    for (std::size_t i = 1; i <= current.size(); ++i) {
        const Value name = current[i][1];
        if (ask(run.self, "isfieldinstru", name, group.lefts) || ask(run.self, "islimbofield", name))
            continue;
        run.log_change(run.change("addlimbofield", group.table, current, i),
                       Value("[WARN] Add LimboField: ") + name, Value("[ERROR] Add LimboField: ") + name);
    }
}

void move_fields(Application& run, const Group& group) {
    for (std::size_t i = 1; i <= group.rights.size(); ++i) {
        const Value& right = group.rights[i];
        if (ask(run.self, "isfielddropped", right)) continue;
        const Value what = Value(" Reorder: ") + host::strzero(i, 3) + " Field: " + right[1];
        run.log_change(run.change("setfieldposition", group.table, right, i), Value("[OK]") + what,
                       Value("[ERROR]") + what);
    }
}

// The driver's own fields go behind the lines; one that cannot be moved leaves its position to the next.
void move_system_fields(Application& run, const Group& group) {
    const Value fields = call(run.self, "filternormalfields", call(run.self, "gettablestruct", group.table));
    std::size_t position = group.rights.size() + 1;
    for (std::size_t i = 1; i <= fields.size(); ++i) {
        if (run.change("setfieldposition", group.table, fields[i], position)) {
            ++position;
            continue;
        }
        run.log(Value("[ERROR] Reorder SysField: ") + fields[i][1] + " At: " + host::strzero(position, 3));
        run.fail();
    }
}

void change_table(Application& run, const Group& group, const Value& current) {
    bool reorder = false;
    for (std::size_t line = 1; line <= group.rights.size(); ++line) {
        const Decision decision = decide(run.self, group.lefts[line], group.rights, current, line);
        reorder = reorder || decision.reorder;
        change_field(run, group, decision.action, line);
    }
    set_aside(run, group, current);
    if (!reorder) return;
    move_fields(run, group);
    move_system_fields(run, group);
}

void apply_group(Application& run, const Group& group) {
    const bool named = !host::empty(group.table);
    const bool exists = named && ask(run.self, "istable", group.table);
    Value current = Value::array_of_size(0);
    if (exists) {
        if (!ask(run.self, "iszmrddtable", group.table)) {
            conn::raiseerror(Value(foreign_table) + group.table);
            return run.fail();
        }
        current = call(run.self, "filterrddfields", call(run.self, "gettablestruct", group.table));
    }
    // The banner of a file is a group without a name: its header is logged, and there is nothing else to do.
    run.log(host::replicate("- ", 25) + "[ " + group.table + " ]");
    if (group.drop_table) return drop_table(run, group.table);
    if (named && !exists) {
        run.log_change(run.change("createtable", group.table, group.rights), "[OK] Table created!",
                       "[ERROR] Creating table");
        return;
    }
    change_table(run, group, current);
}

}  // namespace

Value applymatrix(Self& self, Args args) {
    Application run(self, !host::empty(args[1]));
    const Value matrix = matrix_of(self, args[0]);
    if (host::empty(matrix)) {
        conn::raiseerror(empty_matrix);
        run.fail();
        return run.result();
    }
    // All of it is read before any of it is applied.
    std::vector<Group> groups;
    for (std::size_t k = 1; k <= matrix.size(); ++k) {
        Group group = read_group(self, matrix[k]);
        if (group.damage.is_nil()) {
            groups.push_back(std::move(group));
        } else {
            run.fail();
            conn::raiseerror(group.damage);
        }
    }
    for (const Group& group : groups) apply_group(run, group);
    return run.result();
}

Value checkmatrix(Self& self, Args args) { return call(self, "applymatrix", args[0], true); }

}  // namespace zmfb::matrix
