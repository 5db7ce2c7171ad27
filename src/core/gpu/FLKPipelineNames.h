#pragma once

inline constexpr const char* FLKPipelineNameVertexFragmentTexturedBGRA = "FLKPipelineNameVertexFragmentTexturedBGRA";
inline constexpr const char* FLKPipelineNameVertexFragmentTexturedMaskedBGRA =
    "FLKPipelineNameVertexFragmentTexturedMaskedBGRA";
inline constexpr const char* FLKPipelineNameVertexFragmentTexturedYUV = "FLKPipelineNameVertexFragmentTexturedYUV";
inline constexpr const char* FLKPipelineNameVertexFragmentTexturedMaskedYUV =
    "FLKPipelineNameVertexFragmentTexturedMaskedYUV";
inline constexpr const char* FLKPipelineNameVertexFragmentColored = "FLKPipelineNameVertexFragmentColored";
