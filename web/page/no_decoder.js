// Stands in for the decoder of a compression that is left out.
export default {
  decode() {
    throw new Error("is compressed in a way that is not supported");
  },
};
