// tavell verify: whether a result file holds.
#include "command_line.h"

namespace
{

struct VerifyArguments {
    std::string path;
    std::string format = "text";
};

int run(const VerifyArguments& arguments)
{
    const auto result = tavell::Result::read(arguments.path);
    say(result.findings());
    if (!result) return exitStatusOf(result.status());
    const auto verdict = result->verify();
    say(verdict.findings());
    if (!verdict && verdict.status() != tavell::Status::notConverged) return exitStatusOf(verdict.status());
    const auto certificate = result->certificate(arguments.format);
    say(certificate.findings());
    if (!certificate) return exitStatusOf(certificate.status());
    std::string text = *certificate;
    if (arguments.format == "text")
        text +=
            arguments.path + (verdict ? ": the certificate holds\n" : ": the certificate does not hold\n");
    const int printed = deliver(text, std::nullopt);
    return printed == kConverged ? exitStatusOf(verdict.status()) : printed;
}

}  // namespace

Command addVerifyCommand(CLI::App& program)
{
    const auto arguments = std::make_shared<VerifyArguments>();
    CLI::App* command =
        program.add_subcommand("verify", "Compute the certificate of a result file anew and compare it");
    command->add_option("RESULT", arguments->path, "result file, as \"tavell solve --result\" writes it")
        ->required()
        ->type_name("");
    addChoice(*command, "--format", arguments->format, {"text", "json"},
              "a verdict, or the certificate itself");
    setExamples(*command,
                {"tavell solve examples/networks/two_loops.json --result loops.result.json -o loops.txt",
                 "tavell verify loops.result.json"},
                "0 it holds, 1 it does not, 2 the file cannot be read, 3 internal error.");
    return {command, [arguments] { return run(*arguments); }};
}
