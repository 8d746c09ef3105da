/** What went wrong, in a word. */
export type Status =
  | 'invalid_argument' | 'index_out_of_range' | 'neighbour_out_of_range' | 'not_finite' | 'does_not_fit' | 'chart_limit'
  | 'cancelled' | 'out_of_memory' | 'kept_charts_collide' | 'kept_chart_outside' | 'internal';

/** Why a call failed. */
export class TessoraError extends Error {
  override name = 'TessoraError';
  constructor(
    message: string,
    readonly status: Status = 'internal',
    /** A position in the array that the message names, a number of charts, or of kept charts a polygon. */
    readonly element?: number,
  ) {
    super(message);
  }
}
