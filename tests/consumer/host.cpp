// host.cpp: the least that a host does through the C++ interface; exit status 0 when it works.
#include <tavell/CreateTavell.h>
#include <tavell/ICircuit.h>
#include <tavell/INode.h>
#include <tavell/ITavell.h>

int main()
{
    Velcor::Tavell::ITavell* const system = Velcor::Tavell::CreateTavell(false);
    Velcor::Tavell::ICircuit* const circuit = system->CreateCircuit();
    const int id = circuit->CreateNode()->GetId();
    const bool refused = !circuit->Validate();
    system->Release();
    return id == 1 && refused ? 0 : 1;
}
