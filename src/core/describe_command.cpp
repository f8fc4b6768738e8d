#include "core/describe_command.h"

#include "core/cron/cron_expr.h"
#include "core/triggers/trigger_description.h"

int RunDescribeCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err)
{
    if (args.size() != 1) {
        err << "cadrelle --describe: " << _("usage: cadrelle --describe \"EXPR\"").utf8_string() << "\n";
        return 2;
    }
    const std::string sentence = DescribeCron(wxString::FromUTF8(args[0])).utf8_string();
    try {
        ParseCronExpr(args[0]);
    } catch (const cron::bad_cronexpr&) {
        err << sentence << "\n";
        return 2;
    }
    out << sentence << "\n";
    return 0;
}
