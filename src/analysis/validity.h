// validity.h: whether a circuit is complete enough to be solved.
#pragma once

namespace Velcor::Tavell
{

/// Whether the environment asks for the detailed checks: TAVELL_DETAIL_CHECK, read as a decimal integer, is
/// 1.
/// They look at the ends of every element and at the connectivity, and a solve then refuses an unsuitable
/// circuit.
bool detailCheckRequested();

}  // namespace Velcor::Tavell
